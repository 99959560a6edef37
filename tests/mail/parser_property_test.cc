// The parser equals its reference on random and on mutated mail.

#include <array>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mail/archive.h"
#include "mail/chunked_reader.h"
#include "mail/mbox_importer.h"
#include "mail/message_parser.h"
#include "mail/message_texts.h"
#include "mail/mime.h"
#include "mail/reference_parser.h"
#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

class RandomMail {
 public:
  explicit RandomMail(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }

  template <std::size_t count>
  std::string oneOf(const std::array<const char*, count>& texts) {
    return texts[below(count)];
  }

  std::string archive() {
    std::string text;
    const std::size_t messages = below(4);
    for (std::size_t i = 0; i <= messages; ++i) {
      if (below(5) != 0) {
        text += oneOf(std::array{"From a@b Mon\n", "From \n", "from x\n", ">From y\n", "From z\n\n"});
      }
      text += message(3);
      text += oneOf(std::array{"\n", "\n\n", "", "  \n", "\n\u00A0\n"});
    }
    return text;
  }

  std::string message(int depth) {
    std::string text;
    const std::size_t headers = below(6);
    for (std::size_t i = 0; i < headers; ++i) {
      text += header();
    }
    return text + entity(depth);
  }

  // Changes a few bytes, runs or line ends anywhere.
  std::string mutated(std::string text) {
    const std::size_t changes = below(6);
    for (std::size_t i = 0; i < changes && !text.empty(); ++i) {
      const std::size_t at = below(text.size());
      const std::size_t length = below(std::min<std::size_t>(text.size() - at, 30) + 1);
      switch (below(6)) {
        case 0:
          text.erase(at, length);
          break;
        case 1:
          text.insert(below(text.size() + 1), text.substr(at, length));
          break;
        case 2:
          text.insert(
              at, oneOf(std::array{"\n", "\r", "\r\n", "\n\n", " ", "\t", "--", "--b", "--b--", "\u00A0", "=",
                                   "\nFrom ", ":", ";", "\n--b\n", "\n--b--\n", "\n--b--  \n"}));
          break;
        case 3:
          text[at] = static_cast<char>(below(256));
          break;
        case 4: {  // From one kind of line end to the other, up to a place.
          std::string changed;
          for (const char character : text) {
            changed += character == '\n' && changed.size() < at ? oneOf(std::array{"\r\n", "\r"})
                                                                : std::string(1, character);
          }
          text = changed;
          break;
        }
        default:
          text.insert(
              at, oneOf(std::array{"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xC3\xA9", "\xED\xA0\x80"}));
      }
    }
    return text;
  }

 private:
  std::string header() {
    return oneOf(std::array{"Subject", "subject", "SUBJECT ", "From", "To", "Cc", "Date", "Message-ID",
                            "In-Reply-To", "References", "X-Gmail-Labels", "X-Other", "", "Content-Type",
                            "Content-ID", "Content-Disposition"}) +
           oneOf(std::array{":", ": ", " : ", "", ":\t"}) + value() + lineEnd();
  }

  std::string value() {
    std::string text;
    const std::size_t pieces = below(5);
    for (std::size_t i = 0; i < pieces; ++i) {
      text += oneOf(std::array{"Re: ",
                               "fwd:",
                               "Hello",
                               " ",
                               "Ärger",
                               "<a@b>",
                               "<>",
                               "<c@d> <e@f>",
                               "\"Last, First\" ",
                               ",",
                               ";",
                               "\"",
                               "=?utf-8?q?=C3=A9_x?=",
                               "=?utf-8?b?w6k=?=",
                               "=?x?q?",
                               "\n folded",
                               "\n\t",
                               "\njunk",
                               "Inbox",
                               "Mon, 4 May 2026 10:00:00 +0200",
                               "4 May 26 10:00 GMT",
                               "text/plain",
                               "multipart/x; boundary=b",
                               "charset=latin1",
                               "\u2003"});
    }
    return text;
  }

  std::string lineEnd() { return below(30) == 0 ? oneOf(std::array{"\r\n", "\r", "\n\n", " \n"}) : "\n"; }

  // The Content headers, an empty line and a body.
  std::string entity(int depth) {
    std::string head;
    if (depth > 0 && below(3) != 0) {
      const std::string boundary = oneOf(std::array{"b", "b", "bb", "b--", "c", "--b", "b "});
      head += "Content-Type: " +
              oneOf(std::array{"multipart/mixed", "Multipart/Alternative", "x-multipart/related"}) +
              oneOf(std::array{"; boundary=", ";\n boundary=", "; BOUNDARY=\"", ";boundary=' "}) + boundary +
              oneOf(std::array{"", "", "\"", "; x=y"}) + "\n";
      std::string body = oneOf(std::array{"", "preamble\n", "--b \n", "\n"});
      const std::size_t parts = below(4);
      for (std::size_t i = 0; i < parts; ++i) {
        body += "--" + boundary + oneOf(std::array{"\n", "\n", "\n", " \n", "\n\n", "--\n"});
        body += entity(depth - 1);
        body += oneOf(std::array{"\n", "\n", "", "  \n", "\n\n"});
      }
      body +=
          "--" + boundary + oneOf(std::array{"--\n", "--\n", "--", "-- \n", "\n", "--\nepilogue\n", "--  "});
      return head + oneOf(std::array{"\n", "\n", "\n", "", "\n\n"}) + body;
    }
    if (below(4) != 0) {
      head += "Content-Type: " +
              oneOf(std::array{
                  "text/plain", "text/html", "TEXT/HTML; charset=utf-8", "text/plain; charset=iso-8859-1",
                  "image/png", "image/png; name=a.png", "text/calendar; name=\"=?utf-8?q?=20?=\"",
                  "message/rfc822", "text/plain; charset=utf-16; name=x",
                  "text/plain; charset=", "text/plain; charset=us-ascii", "text/plain; charset=iso-2022-jp",
                  "multipart/mixed", "multipart/mixed; boundary=\"\""}) +
              "\n";
    }
    if (below(3) == 0) {
      head += "Content-Transfer-Encoding: " +
              oneOf(std::array{"base64", "BASE64 ", "quoted-printable", "8bit", "x-quoted-printable"}) + "\n";
    }
    if (below(4) == 0) {
      head +=
          "Content-Disposition: " +
          oneOf(std::array{"inline", "attachment", "attachment; filename=inline.txt", "Inline; filename=\"\"",
                           "attachment; filename==?utf-8?q?a=3Db?=", "x; filename"}) +
          "\n";
    }
    if (below(5) == 0) {
      head += "Content-ID: " + oneOf(std::array{"<id@x>", "<>", "id", ""}) + "\n";
    }
    return head + oneOf(std::array{"\n", "\n", "\n", "\n", "", "\n\n"}) + leaf();
  }

  std::string leaf() {
    std::string text;
    const std::size_t pieces = below(6);
    for (std::size_t i = 0; i < pieces; ++i) {
      text += oneOf(std::array{"Hello world\n", "line\n", "caf=C3=A9 =\n", "SGVsbG8=\n",
                               "/+9=", "<b>bold</b>", "é", "\n\n", " ", "\x1B$B", "--b\n", "-- \n", "a:b\n",
                               "From here\n", ">From there\n",
                               "a somewhat longer run of words that fills the preview up to its end, "});
    }
    return text;
  }

  std::mt19937 random_;
};

void expectSame(const EmailMessage& actual, const EmailMessage& expected, const std::string& input) {
  const EmailMessage a = withoutRandomTexts(actual);
  const EmailMessage e = withoutRandomTexts(expected);
  ASSERT_TRUE(a == e) << "--- is\n"
                      << describe(a) << "--- should be\n"
                      << describe(e) << "--- of\n"
                      << testing::PrintToString(input);
}

MessageList readInChunks(const std::string& bytes, std::size_t chunkSize, std::size_t helpers) {
  ChunkedReader reader(std::make_shared<Archive>(bytes), "library", "name");
  reader.setChunks(chunkSize, helpers);
  MessageList messages;
  reader.read([&](std::shared_ptr<const EmailMessage> message) { messages.push_back(std::move(message)); });
  return messages;
}

TEST(ParserProperty, AMessageEqualsTheReference) {
  RandomMail mail(1);
  for (int round = 0; round < randomRounds / 4; ++round) {
    const std::string input = repairUTF8(mail.mutated(mail.message(4)));
    ASSERT_NO_FATAL_FAILURE(expectSame(parseMessage(input, "library", "name"),
                                       reference::parseMessage(input, "library", "name"), input));
  }
}

TEST(ParserProperty, AnArchiveEqualsTheReference) {
  RandomMail mail(2);
  for (int round = 0; round < randomRounds / 4; ++round) {
    const std::string input = mail.mutated(mail.archive());
    const auto expected = reference::parseArchive(input, "library", "name");
    const MessageList actual = MBOXImporter::parseBytes(input, "library", "name");
    ASSERT_EQ(actual.size(), expected.size()) << testing::PrintToString(input);
    for (std::size_t i = 0; i < actual.size(); ++i) {
      ASSERT_NO_FATAL_FAILURE(expectSame(*actual[i], expected[i], input));
    }
  }
}

TEST(ParserProperty, AnArchiveReadInChunksOfAnySizeEqualsTheWhole) {
  RandomMail mail(3);
  for (int round = 0; round < randomRounds / 40; ++round) {
    const std::string input = mail.mutated(mail.archive());
    const MessageList whole = MBOXImporter::parseBytes(input, "library", "name");
    for (const std::size_t chunkSize : {1U, 2U, 7U, 100U}) {
      const MessageList pieces = readInChunks(input, chunkSize, round % 3);
      ASSERT_EQ(pieces.size(), whole.size()) << testing::PrintToString(input);
      for (std::size_t i = 0; i < whole.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(expectSame(*pieces[i], *whole[i], input));
      }
    }
  }
}

TEST(ParserProperty, SplittingAndHeadersEqualTheReference) {
  RandomMail mail(4);
  for (int round = 0; round < randomRounds / 4; ++round) {
    const std::string input = repairUTF8(mail.mutated(mail.message(3)));
    ASSERT_EQ(parseHeaders(input), reference::parseHeaders(input)) << testing::PrintToString(input);
    for (const std::string boundary : {"b", "bb", "b--", "", "b "}) {
      ASSERT_EQ(splitMultipart(input, boundary), reference::splitMultipart(input, boundary))
          << testing::PrintToString(input);
    }
  }
}

TEST(ParserProperty, TheSizeOfAContentIsThatOfItsBytes) {
  RandomMail mail(5);
  for (int round = 0; round < randomRounds / 4; ++round) {
    const std::string input = mail.mutated(mail.archive());
    for (const auto& message : MBOXImporter::parseBytes(input, "library", "name")) {
      for (const auto& body : {message->plainBody, message->htmlBody}) {
        ASSERT_TRUE(!body || body->size() == body->bytes().size());
      }
      for (const EmailAttachment& attachment : message->attachments) {
        ASSERT_EQ(attachment.data.size(), attachment.data.bytes().size()) << testing::PrintToString(input);
      }
    }
  }
}

}  // namespace
}  // namespace tidewrack
