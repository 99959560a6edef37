// The parser equals its reference on random and on mutated mail.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mail/archive.h"
#include "mail/chunked_reader.h"
#include "mail/mbox_importer.h"
#include "mail/message_parser.h"
#include "mail/message_texts.h"
#include "mail/mime.h"
#include "mail/random_mail.h"
#include "mail/reference_parser.h"
#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

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

TEST(ParserProperty, AMessageWithLongBodiesEqualsTheReference) {
  RandomMail mail(6);
  for (int round = 0; round < randomRounds / 4; ++round) {
    const std::string input = repairUTF8(mail.messageWithLongBodies());
    ASSERT_NO_FATAL_FAILURE(expectSame(parseMessage(input, "library", "name"),
                                       reference::parseMessage(input, "library", "name"), input));
    const std::string archive = "From a\n" + mail.messageWithLongBodies();
    const auto expected = reference::parseArchive(archive, "library", "name");
    const MessageList actual = MBOXImporter::parseBytes(archive, "library", "name");
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
      ASSERT_NO_FATAL_FAILURE(expectSame(*actual[i], expected[i], archive));
      for (const auto& body : {actual[i]->plainBody, actual[i]->htmlBody}) {
        ASSERT_TRUE(!body || body->size() == body->bytes().size());
      }
    }
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
