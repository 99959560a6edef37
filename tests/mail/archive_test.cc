#include "mail/archive.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

struct Encoded {
  std::string body;
  TransferEncoding encoding;
  const char* charset;
  std::string text;
};

const Encoded bodies[] = {
    {"plain text", TransferEncoding::identity, "", "plain text"},
    {"caf\xE9", TransferEncoding::identity, "iso-8859-1", "café"},
    {"caf=C3=A9", TransferEncoding::quotedPrintable, "utf-8", "café"},
    {"caf=E9", TransferEncoding::quotedPrintable, "iso-8859-1", "café"},
    {"Y2Fmw6k=", TransferEncoding::base64, "utf-8", "café"},
    {"Y2Fm6Q==", TransferEncoding::base64, "iso-8859-1", "café"},
};

Content contentOf(const Encoded& each, bool isClean) {
  const auto archive = std::make_shared<const Archive>("before " + each.body + " behind");
  const ArchiveSlice slice{7, each.body.size(), isClean, each.encoding};
  return textContent(archive, slice, Text(each.charset), unknownSize);
}

TEST(ArchiveContent, TextComesInItsCharsetBehindEveryTransferEncoding) {
  for (const auto& each : bodies) {
    EXPECT_EQ(contentOf(each, true).bytes(), each.text) << each.body;
    EXPECT_EQ(contentOf(each, true).size(), each.text.size()) << each.body;
  }
}

TEST(ArchiveContent, TextIsPutBehindAnotherAndLeavesThatAsItIs) {
  for (const auto& each : bodies) {
    // Bytes that no charset of these reads as they stand.
    std::string text = "caf\xE9=41 ";
    contentOf(each, true).appendTo(text);
    EXPECT_EQ(text, "caf\xE9=41 " + each.text) << each.body;
  }
}

TEST(ArchiveContent, TextOfMemoryThatIsUsedAgainHoldsNothingOfTheOneBefore) {
  std::string text;
  for (const std::size_t more : {100, 0}) {
    const std::string padding(more, 'x');
    for (auto each : bodies) {
      if (each.encoding != TransferEncoding::base64) {
        each.body += padding;
        each.text += padding;
      }
      text.clear();
      contentOf(each, true).appendTo(text);
      EXPECT_EQ(text, each.text) << each.body;
    }
  }
}

TEST(ArchiveContent, AttachmentDataIsPutBehindATextWithoutACharset) {
  const auto archive = std::make_shared<const Archive>(std::string("Y2Fm6Q==caf=E9caf\xE9"));
  const auto content = [&](std::uint64_t offset, std::uint64_t length, TransferEncoding encoding) {
    std::string text = ">";
    attachmentContent(archive, {offset, length, true, encoding}).appendTo(text);
    return text;
  };
  EXPECT_EQ(content(0, 8, TransferEncoding::base64), ">caf\xE9");
  EXPECT_EQ(content(8, 6, TransferEncoding::quotedPrintable), ">caf\xE9");
  EXPECT_EQ(content(14, 4, TransferEncoding::identity), ">caf\xE9");
}

TEST(ArchiveContent, BytesThatAreNotCleanAreCleanedFirst) {
  const Encoded folded{"one\r\ntwo=\r\n three", TransferEncoding::quotedPrintable, "utf-8", ""};
  const std::string once = contentOf(folded, false).bytes();
  std::string text = once;
  contentOf(folded, false).appendTo(text);
  EXPECT_EQ(text, once + once);
  EXPECT_EQ(once.find('\r'), std::string::npos);
}

}  // namespace
}  // namespace tidewrack
