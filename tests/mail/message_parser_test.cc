#include "mail/message_parser.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test_sizes.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

EmailMessage parse(const std::string& raw) {
  return parseMessage(raw, "library", "Name");
}

std::optional<std::string> text(const std::optional<Content>& content) {
  return content ? std::optional(content->bytes()) : std::nullopt;
}

TEST(ParseMessage, AnEmptyHeaderBlockStillGivesAnIdAFromAddressASubjectAndAConversation) {
  for (const char* raw : {"", "\n\nbody", "\n", "junk"}) {
    const EmailMessage message = parse(raw);
    EXPECT_TRUE(UUID::parse(message.id)) << message.id;
    EXPECT_EQ(message.from, (EmailAddress{std::nullopt, "unknown@unknown"}));
    EXPECT_EQ(message.subject, "(No Subject)");
    EXPECT_EQ(message.conversationID, message.id);
  }
}

TEST(ParseMessage, EveryFieldComesFromItsHeader) {
  const EmailMessage message = parse(
      "From: =?utf-8?q?Ad=C3=A9?= <ada@example.org>\nTo: a@b, C <c@d>\nCc: e@f\nSubject: Hello\n"
      "Date: Mon, 4 May 2026 10:00:00 +0200\nMessage-ID: <1@x>\nX-Gmail-Labels: Inbox,\"A, b\"\n\nHello "
      "world\n");
  EXPECT_EQ(message.id, "1@x");
  EXPECT_EQ(message.sourceLibraryID, "library");
  EXPECT_EQ(message.sourceLibraryName, "Name");
  EXPECT_EQ(message.subject, "Hello");
  EXPECT_EQ(message.from, (EmailAddress{"Ad\u00E9", "ada@example.org"}));
  EXPECT_THAT(message.to, ElementsAre(EmailAddress{std::nullopt, "a@b"}, EmailAddress{"C", "c@d"}));
  EXPECT_THAT(message.cc, ElementsAre(EmailAddress{std::nullopt, "e@f"}));
  EXPECT_EQ(message.date, parseISO8601("2026-05-04T08:00:00Z"));
  EXPECT_EQ(message.snippet, "Hello world");
  EXPECT_EQ(text(message.plainBody), "Hello world\n");
  EXPECT_EQ(text(message.htmlBody), std::nullopt);
  EXPECT_THAT(message.attachments, IsEmpty());
  EXPECT_THAT(message.labels, ElementsAre("Inbox", "A, b"));
  EXPECT_EQ(message.conversationID, "subject:hello");
  EXPECT_EQ(message.inReplyTo, std::nullopt);
  EXPECT_THAT(message.references, IsEmpty());
  EXPECT_EQ(message.category, std::nullopt);
}

TEST(ParseMessage, AllLineEndsGiveTheSameMessage) {
  const std::string raw =
      "Subject: a\n b\nContent-Type: multipart/mixed; boundary=x\nMessage-ID: 1\n\n"
      "--x\nContent-Disposition: attachment; filename=f\n\n1\n2\n--x\nX: y\n\nline\nline\n--x--\n";
  const auto withLineEnds = [&raw](const std::string& lineEnd) {
    std::string changed;
    for (const char character : raw) {
      changed += character == '\n' ? lineEnd : std::string(1, character);
    }
    EmailMessage message = parse(changed);
    message.attachments.at(0).id = UUID();
    return message;
  };
  EXPECT_EQ(withLineEnds("\r\n"), withLineEnds("\n"));
  EXPECT_EQ(withLineEnds("\r"), withLineEnds("\n"));
  EXPECT_EQ(withLineEnds("\n").attachments[0].data.bytes(), "1\n2");
}

TEST(ParseMessage, NoBlankLineInTheRawTextMakesEverythingHeaders) {
  const EmailMessage message = parse("Subject: one\nnot a body");
  EXPECT_EQ(message.subject, "one");
  EXPECT_EQ(text(message.plainBody), "");
  EXPECT_EQ(message.snippet, "");
}

TEST(ParseMessage, AFirstEmptyLineAloneDoesNotEndTheHeaders) {
  EXPECT_EQ(parse("\nSubject: one\n\nbody").subject, "one");
}

TEST(ParseMessage, AnUnparsableDateIsAbsentAndTheMessageKept) {
  EXPECT_EQ(parse("Date: yesterday\nSubject: s\n\n").date, std::nullopt);
  EXPECT_EQ(parse("Date: yesterday\nSubject: s\n\n").subject, "s");
}

TEST(ParseMessage, ReferencesWithThreeIdsGiveTheFirstAsConversationIdWhateverInReplyToSays) {
  const EmailMessage message = parse("References: <1@x> <2@x>\n <3@x>\nIn-Reply-To: <3@x>\nSubject: s\n\n");
  EXPECT_THAT(message.references, ElementsAre("1@x", "2@x", "3@x"));
  EXPECT_EQ(message.conversationID, "1@x");
  EXPECT_EQ(message.inReplyTo, "3@x");
}

TEST(ParseMessage, InReplyToIsTheConversationWithoutReferences) {
  EXPECT_EQ(parse("In-Reply-To: <3@x>\nSubject: s\n\n").conversationID, "3@x");
}

TEST(ParseMessage, ASubjectBehindReplyPrefixesGivesTheSameKeyWithAndWithoutAccents) {
  EXPECT_EQ(parse("Subject: Re: Fwd: RE: Hello\n\n").conversationID, "subject:hello");
  EXPECT_EQ(parse("Subject: Re: Fwd: RE: H\u00E9ll\u00F6\n\n").conversationID, "subject:hello");
}

TEST(ParseMessage, ASubjectOfOnlyAReplyPrefixMakesTheConversationTheMessageId) {
  const EmailMessage message = parse("Subject: Re:\nMessage-ID: <1@x>\n\n");
  EXPECT_EQ(message.conversationID, "1@x");
  EXPECT_EQ(message.subject, "Re:");
}

TEST(ParseMessage, TheSubjectFallbackNeverEntersAConversationKey) {
  const EmailMessage message = parse("Subject: =?utf-8?q?_?=\nMessage-ID: <1@x>\n\n");
  EXPECT_EQ(message.subject, "(No Subject)");
  EXPECT_EQ(message.conversationID, "1@x");
}

TEST(ParseMessage, AMessageWithoutAMessageIDGetsANewIdentityEachTime) {
  EXPECT_NE(parse("Subject: s\n\n").id, parse("Subject: s\n\n").id);
}

TEST(ParseMessage, AMessageParsedTwiceGetsDifferentAttachmentIds) {
  const std::string raw = "Content-Disposition: attachment\n\nx";
  EXPECT_NE(parse(raw).attachments.at(0).id, parse(raw).attachments.at(0).id);
}

TEST(ParseMessage, WithHTMLOnlyTheSnippetComesFromTheHTML) {
  const EmailMessage message = parse("Content-Type: text/html\n\n<p>One</p>two");
  EXPECT_EQ(message.snippet, "One two");
  EXPECT_EQ(text(message.plainBody), std::nullopt);
}

TEST(ParseMessage, APlainBodyOfOnlyWhiteSpaceLeavesTheSnippetEmptyThoughThereIsHTML) {
  const EmailMessage message = parse(
      "Content-Type: multipart/alternative; boundary=b\n\n--b\nContent-Transfer-Encoding: "
      "quoted-printable\n\n=20\n"
      "--b\nContent-Type: text/html\n\n<p>text</p>\n--b--");
  EXPECT_EQ(text(message.plainBody), " ");
  EXPECT_EQ(text(message.htmlBody), "<p>text</p>");
  EXPECT_EQ(message.snippet, "");
}

TEST(ParseMessage, AFoldedContentTypeIsKeptAsItStoodButForItsFolds) {
  const EmailMessage message = parse("Content-Type: Image/PNG;\n\tname=\"A b.png\"\n\nx");
  ASSERT_EQ(message.attachments.size(), 1U);
  EXPECT_EQ(message.attachments[0].mimeType, "Image/PNG; name=\"A b.png\"");
  EXPECT_EQ(message.attachments[0].fileName, "A b.png");
}

TEST(ParseMessage, TheTextOutlivesWhatItWasMadeFrom) {
  std::optional<EmailMessage> message;
  {
    const std::string raw = "Subject: s\n\n" + std::string(1000, 'x');
    message = parse(raw);
  }
  EXPECT_EQ(text(message->plainBody), std::string(1000, 'x'));
}

// ---- Hostile sizes

TEST(HostileMessage, AHugeHeaderTakesLinearTime) {
  const EmailMessage message = parse("Subject: " + std::string(5 * hostileSize, 'x'));
  EXPECT_EQ(message.subject.size(), 5 * hostileSize);
}

TEST(HostileMessage, AHeaderGivenWithoutEndTakesLinearTime) {
  std::string raw;
  while (raw.size() < hostileSize) {
    raw += "Subject: a\n b\n";
  }
  EXPECT_EQ(parse(raw).subject, "a b");
}

TEST(HostileMessage, EncodedWordsWithoutEndTakeLinearTime) {
  std::string beginnings;
  while (beginnings.size() < hostileSize) {
    beginnings += "=?";
  }
  EXPECT_EQ(parse("Subject: " + beginnings + "\n\n").subject, beginnings);
}

TEST(HostileMessage, ScriptsWithoutEndTakeLinearTime) {
  std::string raw = "Content-Type: text/html\n\n";
  while (raw.size() < hostileSize) {
    raw += "<script";
  }
  EXPECT_FALSE(parse(raw).snippet.empty());
}

TEST(HostileMessage, EmptyLinesWithoutEndTakeLinearTime) {
  EXPECT_EQ(parse("Subject: s\n\n" + std::string(hostileSize, '\n')).snippet, "");
}

}  // namespace
}  // namespace tidewrack
