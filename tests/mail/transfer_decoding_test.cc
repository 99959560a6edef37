#include "mail/transfer_decoding.h"

#include <cctype>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "test_sizes.h"

namespace tidewrack {
namespace {

using std::string_view_literals::operator""sv;

TEST(QuotedPrintable, BodyEndingInALoneEqualsSignKeepsIt) {
  EXPECT_EQ(decodeQuotedPrintable("abc="), "abc=");
  EXPECT_EQ(decodeQuotedPrintable("="), "=");
  EXPECT_EQ(decodeQuotedPrintable("=C"), "=C");
}

TEST(QuotedPrintable, EscapePairDecodesInUpperAndLowerCaseHexadecimalAlike) {
  EXPECT_EQ(decodeQuotedPrintable("=C3=A9"), "\xC3\xA9");
  EXPECT_EQ(decodeQuotedPrintable("=c3=a9"), "\xC3\xA9");
  EXPECT_EQ(decodeQuotedPrintable("=cF=0a=00"), "\xCF\n\0"sv);
}

TEST(QuotedPrintable, SoftLineBreakVanishesAndBlanksBeforeItStay) {
  EXPECT_EQ(decodeQuotedPrintable("a=\nb"), "ab");
  EXPECT_EQ(decodeQuotedPrintable("a  =\r\nb"), "a  b");
  EXPECT_EQ(decodeQuotedPrintable("a= \nb"), "a= \nb");
  EXPECT_EQ(decodeQuotedPrintable("a=\rb"), "a=\rb");
  EXPECT_EQ(decodeQuotedPrintable("a=\r"), "a=\r");
  EXPECT_EQ(decodeQuotedPrintable("a=\n"), "a");
}

TEST(QuotedPrintable, BadEscapeStaysVisible) {
  EXPECT_EQ(decodeQuotedPrintable("=ZZ=3D=G1==41"), "=ZZ==G1=A");
  EXPECT_EQ(decodeQuotedPrintable("a_b"), "a_b");
  EXPECT_EQ(decodeQuotedPrintable(""), "");
}

TEST(QuotedPrintable, ARowOfEscapesEndsWithTheTextOrWithWhateverIsNoEscape) {
  const std::string row = "=D0=9F=D1=80";
  const std::string decoded = "\xD0\x9F\xD1\x80";
  for (const std::string end : {"", "=", "=4", "=G1", "=1G", "==", "x", "\n", "=\r"}) {
    EXPECT_EQ(decodeQuotedPrintable(row + end), decoded + end);
    EXPECT_EQ(decodeQuotedPrintable(row + end + " " + row), decoded + end + " " + decoded) << end;
  }
  for (const std::string softBreak : {"=\n", "=\r\n"}) {
    EXPECT_EQ(decodeQuotedPrintable(row + softBreak), decoded);
    EXPECT_EQ(decodeQuotedPrintable(row + softBreak + row), decoded + decoded);
  }
}

// Byte by byte, as the rule reads.
std::string plainlyDecoded(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const bool isPair = text.size() > 2 && text[0] == '=' &&
                        std::isxdigit(static_cast<unsigned char>(text[1])) != 0 &&
                        std::isxdigit(static_cast<unsigned char>(text[2])) != 0;
    if (isPair) {
      decoded += static_cast<char>(std::stoi(std::string(text.substr(1, 2)), nullptr, 16));
      text.remove_prefix(3);
    } else if (text.starts_with("=\r\n")) {
      text.remove_prefix(3);
    } else if (text.starts_with("=\n")) {
      text.remove_prefix(2);
    } else {
      decoded += text.front();
      text.remove_prefix(1);
    }
  }
  return decoded;
}

TEST(QuotedPrintable, RandomTextsGiveWhatThePlainRuleGives) {
  const std::string_view bytes = "===4fAg\r\n ";
  std::mt19937 random(11);
  for (int round = 0; round < 20'000; ++round) {
    std::string text;
    for (auto size = random() % 24; size != 0; --size) {
      text += bytes[random() % bytes.size()];
    }
    ASSERT_EQ(decodeQuotedPrintable(text), plainlyDecoded(text)) << text;
  }
}

TEST(Base64, KnownValuesDecodeAndEncode) {
  // RFC 4648, section 10.
  const std::vector<std::pair<std::string, std::string>> known = {{"", ""},
                                                                  {"f", "Zg=="},
                                                                  {"fo", "Zm8="},
                                                                  {"foo", "Zm9v"},
                                                                  {"foob", "Zm9vYg=="},
                                                                  {"fooba", "Zm9vYmE="},
                                                                  {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : known) {
    EXPECT_EQ(decodeBase64(text), bytes);
    EXPECT_EQ(encodeBase64(bytes), text);
  }
}

TEST(Base64, UnknownCharactersAreIgnored) {
  EXPECT_EQ(decodeBase64("Zm\r\n9v \t-_.\u00E9Ym\0Fy"sv), "foobar");
  EXPECT_EQ(decodeBase64("Zg=-=\n"), "f");
  EXPECT_EQ(decodeBase64("\r\n!"), "");
}

TEST(Base64, MissingPaddingFails) {
  EXPECT_FALSE(decodeBase64("Zg"));
  EXPECT_FALSE(decodeBase64("Zg="));
  EXPECT_FALSE(decodeBase64("Zm8"));
  EXPECT_FALSE(decodeBase64("Zm9vY"));
  EXPECT_FALSE(decodeBase64("="));
}

TEST(Base64, DigitsBehindThePaddingFail) {
  EXPECT_FALSE(decodeBase64("Zg==Zg=="));
  EXPECT_FALSE(decodeBase64("Zm8=\nx"));
  EXPECT_FALSE(decodeBase64("Zm9v=Zg="));
}

TEST(Base64, PaddingMakesWholeGroups) {
  EXPECT_FALSE(decodeBase64("Zm9v="));
  EXPECT_FALSE(decodeBase64("Zm8=="));
  EXPECT_EQ(decodeBase64("Zm9v===="), "foo");
  EXPECT_FALSE(decodeBase64("Z==="));
}

TEST(TransferDecoding, EncodingIsFoundInsideTheValue) {
  EXPECT_EQ(decodeTransfer("Zm9v", "base64"), "foo");
  EXPECT_EQ(decodeTransfer("Zm9v", "x-base64; odd"), "foo");
  EXPECT_EQ(decodeTransfer("=41", "quoted-printable"), "A");
  EXPECT_EQ(decodeTransfer("Zm9v", "quoted-printable, base64"), "foo");
  for (const auto* name : {"", "7bit", "8bit", "binary", "x-uuencode", "base-64"}) {
    EXPECT_EQ(decodeTransfer("=41 Zg==", name), "=41 Zg==") << name;
  }
}

TEST(TransferDecoding, BrokenBase64GivesNoBytes) {
  EXPECT_EQ(decodeTransfer("Zg", "base64"), "");
  EXPECT_EQ(decodedSize("Zg", TransferEncoding::base64), 0U);
  EXPECT_EQ(decodeTransfer("Zm8=\n____\nA mailing list", "base64"), "");
}

// Byte by byte, without blocks.
std::optional<std::string> plainBase64(std::string_view text) {
  constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string result;
  std::uint64_t digits = 0;
  std::uint64_t padding = 0;
  unsigned bits = 0;
  for (const char byte : text) {
    const std::size_t value = alphabet.find(byte);
    if (byte == '=') {
      ++padding;
    } else if (value != std::string_view::npos) {
      if (padding > 0) {
        return std::nullopt;
      }
      bits = bits << 6U | static_cast<unsigned>(value);
      if (++digits % 4 != 1) {
        result.push_back(static_cast<char>(bits >> (6U - 2U * ((digits + 3) % 4))));
      }
    }
  }
  return (digits + padding) % 4 == 0 && digits % 4 != 1 ? std::optional(result) : std::nullopt;
}

std::string randomBytes(std::mt19937& random, std::size_t size) {
  std::string bytes;
  for (std::size_t index = 0; index < size; ++index) {
    bytes.push_back(static_cast<char>(random()));
  }
  return bytes;
}

TEST(Base64, AnyBytesComeBackWhateverTheLineLength) {
  std::mt19937 random(5);
  for (std::size_t size = 0; size < 300; ++size) {
    const std::string bytes = randomBytes(random, size);
    EXPECT_EQ(decodeBase64(encodeBase64(bytes)), bytes);
  }
  const std::string bytes = randomBytes(random, 20000);
  const std::string text = encodeBase64(bytes);
  for (const std::size_t width : {1U, 4U, 31U, 32U, 33U, 64U, 76U, 997U}) {
    for (const auto* lineEnd : {"\n", "\r\n"}) {
      std::string lines;
      for (std::size_t at = 0; at < text.size(); at += width) {
        lines += text.substr(at, width) + lineEnd;
      }
      EXPECT_EQ(decodeBase64(lines), bytes) << width;
      EXPECT_EQ(decodedSize(lines, TransferEncoding::base64), bytes.size()) << width;
    }
  }
}

TEST(Base64, EveryByteIsADigitOrPaddingOrUnknown) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const std::size_t before : {0U, 3U, 31U, 40U, 4090U}) {
      const std::string text = std::string(before, 'Q') + static_cast<char>(byte) + std::string(43, 'Q');
      for (std::size_t cut = 0; cut < 4; ++cut) {
        const auto part = std::string_view(text).substr(cut);
        ASSERT_EQ(decodeBase64(part), plainBase64(part)) << byte << ' ' << before << ' ' << cut;
      }
    }
  }
}

TEST(Base64, RandomTextsGiveWhatThePlainDecoderGives) {
  std::mt19937 random(6);
  for (int round = 0; round < 3000; ++round) {
    std::string text = encodeBase64(randomBytes(random, random() % 120));
    const std::size_t changes = random() % 4;
    for (std::size_t change = 0; change < changes && !text.empty(); ++change) {
      constexpr std::string_view odd = "=\n =A-\x80";
      text.insert(random() % text.size(), 1, odd[random() % odd.size()]);
    }
    const auto expected = plainBase64(text);
    ASSERT_EQ(decodeBase64(text), expected) << text;
    ASSERT_EQ(decodedBase64Size(text),
              expected ? std::optional<std::uint64_t>(expected->size()) : std::nullopt);
  }
}

TEST(QuotedPrintable, SizeIsKnownWithoutDecoding) {
  const std::vector<std::string> pieces = {"=", "=\n", "=\r\n", "=\r", "=41", "=4", "==", "a", "\n", "text "};
  std::mt19937 random(8);
  for (int round = 0; round < 5000; ++round) {
    std::string text;
    const std::size_t count = random() % 10;
    for (std::size_t index = 0; index < count; ++index) {
      text += pieces[random() % pieces.size()];
    }
    ASSERT_EQ(decodedSize(text, TransferEncoding::quotedPrintable), decodeQuotedPrintable(text).size())
        << text;
  }
  EXPECT_EQ(decodedSize("abc=41", TransferEncoding::identity), 6U);
}

TEST(TransferDecoding, HostileTextsOfAnyLengthAreReadInLinearTime) {
  EXPECT_EQ(decodeQuotedPrintable(std::string(hostileSize, '=')).size(), hostileSize);
  std::string padding(hostileSize, '=');
  EXPECT_FALSE(decodeBase64(padding.append("A")));
  std::string alternating;
  while (alternating.size() < hostileSize) {
    alternating += "A\n";
  }
  EXPECT_EQ(decodedSize(alternating, TransferEncoding::base64), alternating.size() / 8 * 3);
  EXPECT_EQ(decodeBase64(alternating)->size(), alternating.size() / 8 * 3);
  EXPECT_EQ(decodeBase64(std::string(hostileSize, '\n')), "");
}

TEST(AppendTransfer, PutsTheDecodedBytesBehindATextThatStays) {
  const auto behind = [](std::string text, std::string_view body, TransferEncoding encoding) {
    appendTransfer(text, body, encoding);
    return text;
  };
  EXPECT_EQ(behind("a=", "41=41", TransferEncoding::identity), "a=41=41");
  EXPECT_EQ(behind("a=", "41=41=", TransferEncoding::quotedPrintable), "a=41A=");
  EXPECT_EQ(behind("a=", "QUE=", TransferEncoding::base64), "a=AA");
  EXPECT_EQ(behind("a=", "QUE", TransferEncoding::base64), "a=");
  EXPECT_EQ(behind("", "QUE=", TransferEncoding::base64), "AA");
}

}  // namespace
}  // namespace tidewrack
