#pragma once

#include <algorithm>
#include <array>
#include <random>
#include <string>

namespace tidewrack {

/// Mail that keeps and breaks every rule of its format, always the same for one seed.
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

  // A message with a plain body, an HTML body or both, of which a preview needs but a beginning. What is
  // special stands around the place up to which a text is read at first.
  std::string messageWithLongBodies() {
    if (below(3) == 0) {
      return "Subject: s\n" + longText("text/plain");
    }
    if (below(3) == 0) {
      return "Subject: s\n" + longText("text/html");
    }
    const bool plainIsFirst = below(4) != 0;
    return "Content-Type: multipart/alternative; boundary=long\n\n--long\n" +
           (below(6) == 0 ? "Content-Type: text/plain\n\n" + leaf()
                          : longText(plainIsFirst ? "text/plain" : "text/html")) +
           "\n--long\n" + longText(plainIsFirst ? "text/html" : "text/plain") + "\n--long--\n";
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

  std::string longText(const std::string& type) {
    std::string text = "Content-Type: " + type +
                       oneOf(std::array{"", "; charset=utf-8", "; charset=iso-8859-1", "; charset=us-ascii",
                                        "; charset=shift_jis", "; charset=iso-2022-jp", "; charset=utf-16",
                                        "; charset=koi8-r", "; charset=utf-7", "; charset=nonsense"}) +
                       "\nContent-Transfer-Encoding: " +
                       oneOf(std::array{"quoted-printable", "quoted-printable", "8bit", "base64"}) + "\n\n";
    const std::string filler =
        oneOf(std::array{"words and words ", " ", "=20", "=\n", "\n", "x", "<p>text</p> ",
                         "<style>a{}</style>", "=3Cb=3E", "caf=C3=A9 ", "\x1B$B", "+AGE-", "<i>"});
    const std::size_t size = 960 + below(80);
    while (text.size() < size) {
      text += filler;
    }
    text +=
        leaf() + oneOf(std::array{"=", "==", "=C", "=C3", "=C3=A9", "\xC3\xA9", "\xE9", "=FF", "=\r\n", ""});
    for (std::size_t i = below(40); i > 0; --i) {
      text += filler;
    }
    return text + leaf();
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

}  // namespace tidewrack
