#include "reading/detail_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/byte_count.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> texts(const EmailMessage& message) {
  std::vector<std::string> result;
  for (const auto& row : detailHeaderRows(message)) {
    result.push_back(row.text);
  }
  return result;
}

TEST(DetailHeaderRows, FromAndDateAlwaysStandThere) {
  EmailMessage message;
  message.from.address = "ana@example.org";
  EXPECT_THAT(texts(message), ElementsAre("From: ana@example.org", "Date: No date"));
}

TEST(DetailHeaderRows, ToAndCcStandThereWhenTheyAreNotEmpty) {
  EmailMessage message;
  message.from = {Text("Ana"), "ana@example.org"};
  message.to = {{std::nullopt, "b@example.org"}, {Text("Cy"), "c@example.org"}};
  message.cc = {{Text(""), "d@example.org"}};
  EXPECT_THAT(texts(message),
              ElementsAre("From: Ana <ana@example.org>", "To: b@example.org, Cy <c@example.org>",
                          "Cc: d@example.org", "Date: No date"));
  const auto rows = detailHeaderRows(message);
  EXPECT_EQ(rows[1].icon, "person.2");
  EXPECT_EQ(rows[2].icon, "person.2.wave.2");
  EXPECT_EQ(rows[3].icon, "calendar");
}

TEST(DetailHeaderRows, APercentSignInANameStays) {
  EmailMessage message;
  message.from = {Text("100%@ %d"), "a@b"};
  EXPECT_EQ(texts(message).front(), "From: 100%@ %d <a@b>");
}

std::vector<std::string> badgeIDs(const std::vector<Text>& labels) {
  std::vector<std::string> ids;
  for (const auto& badge : messageBadges(labels)) {
    ids.push_back(badge.id);
  }
  return ids;
}

TEST(MessageBadges, AMailboxATabAndAUserLabelEachHaveTheirOwnKind) {
  const auto badges = messageBadges({"Recibidos", "Category Promotions", "Work"});
  ASSERT_EQ(badges.size(), 3U);
  EXPECT_EQ(badges[0], (MessageBadge{"mailbox:inbox", "Inbox", "tray.fill", std::string_view("blue")}));
  EXPECT_EQ(badges[1],
            (MessageBadge{"category:promotions", "Promotions", "tag.circle.fill", std::string_view("pink")}));
  EXPECT_EQ(badges[2], (MessageBadge{"user:Work", "Work", "tag.circle.fill", avatarColor("Work")}));
}

TEST(MessageBadges, ALabelWithAClientPrefixHasTheTitleWithoutIt) {
  EXPECT_EQ(messageBadges({"[Gmail]/Work"}).at(0).title, "Work");
  EXPECT_EQ(messageBadges({"[GOOGLE MAIL]/ Work "}).at(0).title, "Work");
}

TEST(MessageBadges, WorkWithAndWithoutTheImapPrefixIsOneBadge) {
  EXPECT_THAT(badgeIDs({"Work", "[Imap]/Work"}), ElementsAre("user:Work"));
}

TEST(MessageBadges, QuotesAndBackslashesAroundALabelGo) {
  EXPECT_THAT(badgeIDs({"\"Work\"", "\\Tides\\"}), ElementsAre("user:Work"));
}

TEST(MessageBadges, TwoSpellingsOfAMailboxAreOneBadge) {
  EXPECT_THAT(badgeIDs({"Inbox", "Recibidos", "Posteingang"}), ElementsAre("mailbox:inbox"));
}

TEST(MessageBadges, HiddenLabelsHaveNone) {
  EXPECT_THAT(badgeIDs({"Unread", "$NotJunk", "", "  ", "/", " / "}), IsEmpty());
}

TEST(MessageBadges, OneLabelHasTheSameColourEverywhere) {
  EXPECT_EQ(messageBadges({"Work"}).at(0).color, messageBadges({"[Gmail]/Work"}).at(0).color);
}

TEST(AttachmentRows, TheIconFollowsTheMimeType) {
  EXPECT_EQ(attachmentIcon("image/png; name=x"), "photo");
  EXPECT_EQ(attachmentIcon("application/pdf"), "doc.richtext");
  EXPECT_EQ(attachmentIcon("application/pdf; name=x"), "paperclip");
  EXPECT_EQ(attachmentIcon("text/plain"), "doc.text");
  EXPECT_EQ(attachmentIcon("TEXT/PLAIN"), "paperclip");
  EXPECT_EQ(attachmentIcon(""), "paperclip");
}

TEST(AttachmentRows, ShowNameAndSize) {
  EmailAttachment attachment;
  attachment.fileName = "tides.pdf";
  attachment.mimeType = "application/pdf";
  attachment.data = Content::ofBytes(std::string(12'345, 'x'));
  EXPECT_EQ(attachmentRows({attachment}),
            (std::vector<AttachmentRow>{{0, "doc.richtext", "tides.pdf", formatByteCount(12'345)}}));
}

TEST(AttachmentRows, TheTitleCountsThem) {
  EXPECT_EQ(attachmentsTitle(3), "3 attachment(s)");
}

}  // namespace
}  // namespace tidewrack
