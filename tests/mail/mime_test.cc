#include "mail/mime.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test_sizes.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::optional<std::string> text(const std::optional<Content>& content) {
  return content ? std::optional(content->bytes()) : std::nullopt;
}

ParsedBody multipart(const std::string& body) {
  return parseBody(body, {{"content-type", "multipart/mixed; boundary=b"}});
}

// ---- Parts

TEST(SplitMultipart, PartsStandBetweenDelimiterLinesAndAreTrimmed) {
  EXPECT_THAT(
      splitMultipart("preamble\n--b\n\n one \n\n--b\r\ntwo\rlines\n--b--\nepilogue\n--b\nthree\n--b--", "b"),
      ElementsAre("one", "two\nlines"));
}

TEST(SplitMultipart, ADelimiterLineWithTrailingBlanksIsAnOrdinaryLine) {
  EXPECT_THAT(splitMultipart("--b\none\n--b \ntwo\n--b-- \n--b--", "b"),
              ElementsAre("one\n--b \ntwo\n--b--"));
}

TEST(SplitMultipart, APartThatIsStillOpenWhenTheBodyEndsIsThrownAway) {
  EXPECT_THAT(splitMultipart("--b\none\n--b\ntwo\n", "b"), ElementsAre("one"));
}

TEST(SplitMultipart, EmptyPartsAreRemoved) {
  EXPECT_THAT(splitMultipart("--b\n--b\n\n \n--b\nx\n--b--", "b"), ElementsAre("x"));
}

TEST(SplitMultipart, AClosingLineBeforeAnyPartEndsTheReading) {
  EXPECT_THAT(splitMultipart("--b--\n--b\nx\n--b--", "b"), IsEmpty());
}

TEST(SplitMultipart, ABoundaryThatNeverOccursGivesNoParts) {
  EXPECT_THAT(splitMultipart("--a\nx\n--a--", "b"), IsEmpty());
  EXPECT_THAT(splitMultipart("", "b"), IsEmpty());
}

// ---- The walk

TEST(ParseBody, AlternativeWithPlainThenHTMLGivesBothBodies) {
  const ParsedBody body =
      parseBody("--b\nContent-Type: text/plain\n\nplain\n--b\nContent-Type: text/html\n\n<p>html</p>\n--b--",
                {{"content-type", "multipart/alternative; boundary=\"b\""}});
  EXPECT_EQ(text(body.plainBody), "plain");
  EXPECT_EQ(text(body.htmlBody), "<p>html</p>");
  EXPECT_THAT(body.attachments, IsEmpty());
}

TEST(ParseBody, WithHTMLOnlyThePlainBodyIsAbsent) {
  const ParsedBody body = parseBody("--b\nContent-Type: TEXT/HTML\n\n<p>html</p>\n--b--",
                                    {{"content-type", "multipart/alternative; boundary=b"}});
  EXPECT_EQ(text(body.plainBody), std::nullopt);
  EXPECT_EQ(text(body.htmlBody), "<p>html</p>");
}

TEST(ParseBody, AMixedMultipartWithTwoPlainLeavesKeepsTheFirstAndTheSecondIsLost) {
  const ParsedBody body = multipart("--b\nX: y\n\none\n--b\nX: y\n\ntwo\n--b--");
  EXPECT_EQ(text(body.plainBody), "one");
  EXPECT_THAT(body.attachments, IsEmpty());
}

TEST(ParseBody, AnEmptyFirstPlainLeafDoesNotBlockTheSecond) {
  const ParsedBody body = multipart("--b\nContent-Transfer-Encoding: base64\n\n!\n--b\nX: y\n\ntwo\n--b--");
  EXPECT_EQ(text(body.plainBody), "two");
}

TEST(ParseBody, ANestedRelatedMultipartContributesItsHTMLAndItsInlineImage) {
  const ParsedBody body = parseBody(
      "--a\nContent-Type: text/plain\n\nplain\n--a\nContent-Type: multipart/related; boundary=r\n\n"
      "--r\nContent-Type: text/html\n\n<img src=\"cid:i@x\">\n"
      "--r\nContent-Type: image/png\nContent-ID: <i@x>\nContent-Transfer-Encoding: "
      "base64\n\nAQID\n--r--\n--a--",
      {{"content-type", "multipart/alternative; boundary=a"}});
  EXPECT_EQ(text(body.plainBody), "plain");
  EXPECT_EQ(text(body.htmlBody), "<img src=\"cid:i@x\">");
  ASSERT_EQ(body.attachments.size(), 1U);
  EXPECT_TRUE(body.attachments[0].isInline);
  EXPECT_EQ(body.attachments[0].contentID, "i@x");
  EXPECT_EQ(body.attachments[0].data.bytes(), "\x01\x02\x03");
}

TEST(ParseBody, APDFWithAttachmentInItsDispositionAndAFileNameBecomesAnAttachmentAndSoDoesATextLeaf) {
  const ParsedBody body = multipart(
      "--b\nContent-Type: application/pdf; name=other\nContent-Disposition: attachment; "
      "filename=\"a.pdf\"\n\n%PDF\n"
      "--b\nContent-Type: text/plain; charset=UTF-8\nContent-Disposition: ATTACHMENT\n\nnotes\n--b--");
  EXPECT_EQ(text(body.plainBody), std::nullopt);
  ASSERT_EQ(body.attachments.size(), 2U);
  EXPECT_EQ(body.attachments[0].fileName, "a.pdf");
  EXPECT_EQ(body.attachments[0].mimeType, "application/pdf; name=other");
  EXPECT_FALSE(body.attachments[0].isInline);
  EXPECT_EQ(body.attachments[1].mimeType, "text/plain; charset=UTF-8");
  EXPECT_EQ(body.attachments[1].data.bytes(), "notes");
  EXPECT_TRUE(body.attachments[1].fileName.view().starts_with("attachment-"));
  EXPECT_TRUE(UUID::parse(body.attachments[1].fileName.view().substr(11)));
  EXPECT_NE(body.attachments[0].id, body.attachments[1].id);
}

TEST(ParseBody, ATextLeafWithAFileNameAndNoDispositionIsABodyAndItsNameIsLost) {
  const ParsedBody body = parseBody("text", {{"content-type", "text/plain; name=a.txt"}});
  EXPECT_EQ(text(body.plainBody), "text");
  EXPECT_THAT(body.attachments, IsEmpty());
}

TEST(ParseBody, AnImageWithNoNameAndNoDispositionReadsAsPlainText) {
  EXPECT_EQ(text(parseBody("AQID", {{"content-type", "image/png"}}).plainBody), "AQID");
}

TEST(ParseBody, AnImageWithAContentIDAndNoFileNameGetsThatIdAsFileName) {
  const ParsedBody body = parseBody("x", {{"content-type", "image/png"}, {"content-id", "<logo@x>"}});
  ASSERT_EQ(body.attachments.size(), 1U);
  EXPECT_EQ(body.attachments[0].fileName, "logo@x");
}

TEST(ParseBody, AFileNameThatDecodesToNothingCountsAsNoName) {
  const ParsedBody body = parseBody("x", {{"content-type", "image/png; name=\"=?utf-8?q?_?=\""}});
  ASSERT_EQ(body.attachments.size(), 1U);
  EXPECT_TRUE(body.attachments[0].fileName.view().starts_with("attachment-"));
}

TEST(ParseBody, ADispositionOfInlineOnATextLeafIsABody) {
  const ParsedBody body = parseBody("text", {{"content-disposition", "inline; filename=a.txt"}});
  EXPECT_EQ(text(body.plainBody), "text");
  EXPECT_THAT(body.attachments, IsEmpty());
}

TEST(ParseBody, ADispositionAttachmentWhoseFileNameContainsTheWordInlineGivesAnAttachmentWithIsInlineTrue) {
  const ParsedBody body = parseBody(
      "x", {{"content-type", "image/png"}, {"content-disposition", "attachment; filename=inline.png"}});
  ASSERT_EQ(body.attachments.size(), 1U);
  EXPECT_TRUE(body.attachments[0].isInline);
}

TEST(ParseBody, ALeafOfAnotherTypeWithoutNameDispositionAndIdReadsAsPlainTextAndIsNotParsedFurther) {
  const ParsedBody body = parseBody("Subject: inner\n\ntext", {{"content-type", "message/rfc822"}});
  EXPECT_EQ(text(body.plainBody), "Subject: inner\n\ntext");
}

TEST(ParseBody, ABodyEndingInALoneEqualsSignKeepsIt) {
  const HeaderMap headers = {{"content-transfer-encoding", "Quoted-Printable"}};
  EXPECT_EQ(text(parseBody("a=", headers).plainBody), "a=");
  EXPECT_EQ(text(parseBody("caf=C3=A9 caf=c3=a9", headers).plainBody), "caf\u00E9 caf\u00E9");
}

TEST(ParseBody, ALeafDeclaredLatin1WithNoTransferEncodingIsReadFromTheUTF8BytesAsLatin1) {
  EXPECT_EQ(text(parseBody("\u00E9", {{"content-type", "text/plain; charset=iso-8859-1"}}).plainBody),
            "\u00C3\u00A9");
}

TEST(ParseBody, AMultipartWithoutABoundaryParameterIsItsRawTextAsPlainBody) {
  for (const char* type : {"multipart/mixed", "multipart/mixed; boundary=\"\""}) {
    const ParsedBody body =
        parseBody("--b\r\n=41", {{"content-type", type}, {"content-transfer-encoding", "quoted-printable"}});
    EXPECT_EQ(text(body.plainBody), "--b\r\n=41");
    EXPECT_EQ(text(body.htmlBody), std::nullopt);
  }
}

TEST(ParseBody, ABoundaryThatNeverOccursGivesNoBodiesAndNoAttachments) {
  const ParsedBody body = multipart("text\n--c\n\nx\n--c--");
  EXPECT_EQ(text(body.plainBody), std::nullopt);
  EXPECT_EQ(text(body.htmlBody), std::nullopt);
  EXPECT_THAT(body.attachments, IsEmpty());
}

TEST(ParseBody, InvalidBase64GivesAnEmptyBodyOrAnAttachmentOfZeroLength) {
  HeaderMap headers = {{"content-transfer-encoding", "base64"}};
  EXPECT_EQ(text(parseBody("QQ", headers).plainBody), "");
  headers["content-disposition"] = "attachment";
  const ParsedBody body = parseBody("QQ", headers);
  ASSERT_EQ(body.attachments.size(), 1U);
  EXPECT_EQ(body.attachments[0].data.size(), 0U);
}

TEST(ParseBody, AnEmptyBodyThatIsNoMultipartIsPresent) {
  EXPECT_EQ(text(parseBody("", {}).plainBody), "");
  EXPECT_EQ(text(parseBody("", {{"content-type", "text/html"}}).htmlBody), "");
}

TEST(ParseBody, APartThatBeginsWithABlankLineIsReadAsHeadersAndYieldsNothing) {
  const ParsedBody body = multipart("--b\n\ntext without headers\n--b--");
  EXPECT_EQ(text(body.plainBody), std::nullopt);
}

TEST(ParseBody, TheTrimOfAPartMayMakeItsLastLineADelimiterOfTheInnerMultipart) {
  const std::string inner =
      "--b\nContent-Type: multipart/mixed; boundary=i\n\n--i\nX: y\n\ntext\n--i--  \n--b--";
  EXPECT_EQ(text(multipart(inner).plainBody), "text");
  const std::string opening =
      "--b\nContent-Type: multipart/mixed; boundary=i\n\n--i\nX: y\n\ntext\n--i\u00A0\n--b--";
  EXPECT_EQ(text(multipart(opening).plainBody), "text");
}

TEST(ParseBody, AnUnknownCharsetNeverFails) {
  EXPECT_EQ(text(parseBody("=E9", {{"content-type", "text/plain; charset=nonsense"},
                                   {"content-transfer-encoding", "quoted-printable"}})
                     .plainBody),
            "\u00E9");
}

TEST(AttachmentFileName, TheDispositionComesFirstAndEmptyNamesDoNotCount) {
  EXPECT_EQ(attachmentFileName({}), std::nullopt);
  EXPECT_EQ(
      attachmentFileName({{"content-disposition", "attachment; filename=a"}, {"content-type", "x; name=b"}}),
      "a");
  EXPECT_EQ(attachmentFileName(
                {{"content-disposition", "attachment; filename=\"\""}, {"content-type", "x; name=b"}}),
            "b");
  EXPECT_EQ(attachmentFileName({{"content-type", "x; name=\"=?utf-8?q?caf=C3=A9?=\""}}), "caf\u00E9");
  EXPECT_EQ(attachmentFileName({{"content-disposition", "attachment"}}), std::nullopt);
}

// ---- Hostile sizes

TEST(HostileMIME, AHundredThousandNestedMultipartsAreWalked) {
  constexpr int depth = 100'000;
  std::string body;
  for (int i = 0; i < depth; ++i) {
    const std::string boundary = std::to_string(i);
    body += "--" + boundary + "\nContent-Type: multipart/mixed; boundary=" + std::to_string(i + 1) + "\n\n";
  }
  body += "--" + std::to_string(depth) + "\nX: y\n\ninnermost\n";
  for (int i = depth; i >= 0; --i) {
    body += "--" + std::to_string(i) + "--\n";
  }
  EXPECT_EQ(text(parseBody(body, {{"content-type", "multipart/mixed; boundary=0"}}).plainBody), "innermost");
}

TEST(HostileMIME, NestedMultipartsOfOneBoundaryTakeLinearTime) {
  std::string body;
  while (body.size() < hostileSize) {
    body += "--b\nContent-Type: multipart/mixed; boundary=b\n\n";
  }
  EXPECT_THAT(multipart(body + "--b--").attachments, IsEmpty());
}

TEST(HostileMIME, AMillionEmptyPartsTakeLinearTime) {
  std::string body;
  for (std::size_t i = 0; i < hostileSize / 10; ++i) {
    body += "--b\n";
  }
  EXPECT_EQ(text(multipart(body + "X: y\n\ntext\n--b--").plainBody), "text");
}

TEST(HostileMIME, ManyAttachmentsInATextWithOtherLineEndsTakeLinearTime) {
  std::string body = "\xC3\xA9";
  while (body.size() < hostileSize) {
    body += "\r\n--b\r\nContent-ID: x\r\nContent-Type: a\r\n\r\nz";
  }
  EXPECT_GT(multipart(body + "\r\n--b--").attachments.size(), hostileSize / 100);
}

}  // namespace
}  // namespace tidewrack
