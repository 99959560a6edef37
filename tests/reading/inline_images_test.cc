#include "reading/inline_images.h"

#include <chrono>
#include <random>

#include <gtest/gtest.h>

#include "reading/base64_writer.h"
#include "reading/html_document.h"

namespace tidewrack {
namespace {

EmailAttachment image(const char* contentID, std::string bytes, const char* mimeType = "image/png") {
  EmailAttachment attachment;
  attachment.fileName = "image";
  attachment.mimeType = mimeType;
  attachment.data = Content::ofBytes(std::move(bytes));
  attachment.contentID = Text(contentID);
  attachment.isInline = true;
  return attachment;
}

EmailMessage messageWith(std::string html, std::vector<EmailAttachment> attachments) {
  EmailMessage message;
  message.id = "1";
  message.htmlBody = Content::ofBytes(std::move(html));
  message.attachments = std::move(attachments);
  return message;
}

std::string resolved(const std::string& html, std::vector<EmailAttachment> attachments) {
  return resolveInlineHTML(messageWith(html, std::move(attachments))).html.value();
}

std::string base64(std::string_view bytes) {
  std::string text(base64Size(bytes.size()), '?');
  writeBase64(bytes, text.data());
  return text;
}

TEST(Base64Writer, WritesTheExamplesOfTheStandard) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64("\xFF\xFE\xFD"), "//79");
}

TEST(ResolveInlineHTML, WithNoBodyBothAreEmpty) {
  EXPECT_EQ(resolveInlineHTML(EmailMessage()), ResolvedHTML());
}

TEST(ResolveInlineHTML, AReferenceBecomesADataURLWithTheWholeMimeType) {
  EXPECT_EQ(resolved("<img src=\"cid:a@b\">", {image("a@b", "foo", "image/png; name=\"x.png\"")}),
            "<img src=\"data:image/png; name=\"x.png\";base64,Zm9v\">");
}

TEST(ResolveInlineHTML, TheFormInAngleBracketsIsReplacedToo) {
  EXPECT_EQ(resolved("cid:<a> cid:a", {image("a", "foo")}),
            "data:image/png;base64,Zm9v data:image/png;base64,Zm9v");
}

TEST(ResolveInlineHTML, AContentIDAlsoRewritesTheHeadOfALongerOne) {
  EXPECT_EQ(resolved("cid:img1 cid:img10", {image("img1", "foo"), image("img10", "bar")}),
            "data:image/png;base64,Zm9v data:image/png;base64,Zm9v0");
  EXPECT_EQ(resolved("cid:img1 cid:img10", {image("img10", "bar"), image("img1", "foo")}),
            "data:image/png;base64,Zm9v data:image/png;base64,YmFy");
}

TEST(ResolveInlineHTML, CaseMatters) {
  EXPECT_EQ(resolved("CID:a cid:A", {image("a", "foo")}), "CID:a cid:A");
}

TEST(ResolveInlineHTML, AnAttachmentThatIsNotInlineIsNeverUsed) {
  auto attached = image("a", "foo");
  attached.isInline = false;
  auto nameless = image("", "foo");
  EXPECT_EQ(resolved("cid:a", {attached, nameless}), "cid:a");
  EXPECT_FALSE(hasInlineReferences(messageWith("", {attached, nameless})));
}

TEST(ResolveInlineHTML, TheHintComesFromTheStoredText) {
  const auto result =
      resolveInlineHTML(messageWith("<body bgcolor='cid:a'>", {image("a", "foo", "color-scheme: dark")}));
  EXPECT_EQ(result.hint, std::nullopt);
  EXPECT_EQ(resolveInlineHTML(messageWith("<body bgcolor='#000'>", {})).hint, HTMLAppearance::dark);
}

TEST(ResolveInlineHTML, OfTwoAttachmentsWithOneContentIDTheFirstCounts) {
  EXPECT_EQ(resolved("cid:a", {image("a", "foo"), image("a", "bar")}), "data:image/png;base64,Zm9v");
}

TEST(ResolveInlineHTML, AMimeTypeThatHoldsAReferenceIsReplacedInItsTurn) {
  EXPECT_EQ(resolved("cid:a", {image("a", "foo", "x/cid:b"), image("b", "bar", "y")}),
            "data:x/data:y;base64,YmFy;base64,Zm9v");
}

TEST(ResolveInlineHTML, ABase64EndThatMakesAReferenceIsReplacedInItsTurn) {
  // The three bytes whose Base64 is "Acid".
  const std::string bytes = "\x01\xC8\x9D";
  ASSERT_EQ(base64(bytes), "Acid");
  EXPECT_EQ(resolved("cid:a:b", {image("a", bytes, "x"), image("b", "foo", "y")}),
            "data:x;base64,Adata:y;base64,Zm9v");
}

TEST(ResolveInlineHTML, AReferenceMadeByAURLBehindItIsReplacedInItsTurn) {
  EXPECT_EQ(resolved("cid:cid:a", {image("a", "foo", "x"), image("da", "bar", "y")}),
            "data:y;base64,YmFyta:x;base64,Zm9v");
}

TEST(ResolveInlineHTML, AHugeResultIsNotMade) {
  const auto message = messageWith("", {image("a", std::string(1000, 'x'))});
  const std::string html = "cid:a cid:a cid:a";
  EXPECT_EQ(replaceInlineImages(html, inlineImages(message), 3000), html);
  EXPECT_EQ(replaceInlineImagesOneByOne(html, inlineImages(message), 3000), html);
  EXPECT_NE(replaceInlineImages(html, inlineImages(message), 5000), html);
}

TEST(ResolveInlineHTML, ATextMadeToCauseEndlessWorkStaysAsItIs) {
  const auto message = messageWith("", {image("c", "foo"), image("d", "bar")});
  EXPECT_EQ(replaceInlineImagesOneByOne("cid:c cid:d", inlineImages(message), 1000, 30), "cid:c cid:d");
  EXPECT_NE(replaceInlineImagesOneByOne("cid:c cid:d", inlineImages(message), 1000, 1000), "cid:c cid:d");
}

TEST(ReplaceInlineImages, EqualsTheLiteralSequenceOnAnyText) {
  const std::vector<std::string> words = {"cid:", "cid:", "c",  "i",     "d",      ":", "a",
                                          "data", "<",    ">",  "b",     "ab",     "x", "ci",
                                          "id",   "cid",  "d:", "cid:a", "cid:<b>"};
  const std::vector<std::string> types = {"t", "t", "t", "t", "x/cid:a", "cid", ":b"};
  const std::vector<std::string> bytes = {"", "x", "foo", "\x01\xC8\x9D", "\x00\x00\x1C", "\x00\x07\x22"};
  std::mt19937 random(3);
  const auto text = [&](std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
      result += words[random() % words.size()];
    }
    return result;
  };
  int changed = 0;
  for (int round = 0; round < 60'000; ++round) {
    std::vector<EmailAttachment> attachments;
    for (auto count = 1 + random() % 4; count > 0; --count) {
      attachments.push_back(image(text(1 + random() % 2).c_str(), bytes[random() % bytes.size()],
                                  types[random() % types.size()].c_str()));
    }
    const auto message = messageWith("", std::move(attachments));
    const auto images = inlineImages(message);
    const auto html = text(1 + random() % 12);
    const auto expected = replaceInlineImagesOneByOne(html, images);
    changed += expected != html ? 1 : 0;
    ASSERT_EQ(replaceInlineImages(html, images), expected) << html;
  }
  EXPECT_GT(changed, 6'000);
}

TEST(ReplaceInlineImages, ThirtyMegabytesWithFiveHundredImagesAreOnePass) {
  std::vector<EmailAttachment> attachments;
  std::string html;
  for (int i = 0; i < 500; ++i) {
    const auto id = "part" + std::to_string(i) + ".0123456789@example.org";
    attachments.push_back(image(id.c_str(), std::string(20'000, static_cast<char>(i))));
    html += "<p>" + std::string(60'000, 'x') + "</p><img src=\"cid:" + id + "\">";
  }
  const auto message = messageWith("", std::move(attachments));
  const auto images = inlineImages(message);
  const auto result = replaceInlineImages(html, images);
  EXPECT_EQ(result.find("cid:"), std::string::npos);
  EXPECT_GT(result.size(), 30'000'000 + 500U * base64Size(20'000));
}

// One pass for each of the images would take very long.
TEST(ReplaceInlineImages, ManyReferencesToThousandsOfImagesTakeLinearTime) {
  std::vector<EmailAttachment> attachments;
  for (int i = 0; i < 5'000; ++i) {
    attachments.push_back(image(("x" + std::to_string(i)).c_str(), "foo"));
  }
  const auto message = messageWith("", std::move(attachments));
  std::string html;
  while (html.size() < 1'000'000) {
    html += "cid:y";
  }
  EXPECT_EQ(replaceInlineImages(html, inlineImages(message)), html);
}

}  // namespace
}  // namespace tidewrack
