#include "classify/gmail_labels.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using enum GmailSystemMailbox;

TEST(GmailLabels, AClientPrefixInAnyCaseAndBlanksAroundTheLabelDoNotMatter) {
  EXPECT_EQ(matchingSystemMailbox("  [GMAIL]/Papelera "), trash);
  EXPECT_EQ(matchingSystemMailbox("[Google Mail]/Entwürfe"), drafts);
  EXPECT_EQ(matchingSystemMailbox("[IMAP]/Sent"), sent);
}

TEST(GmailLabels, AccentsFoldBeforeTheCategoryIsLookedUp) {
  EXPECT_EQ(normalizedLabelKey("CATEGORÍA FOROS"), "categoria foros");
  EXPECT_EQ(matchingCategoryFolder("CATEGORÍA FOROS"), GmailCategoryFolder::forums);
  EXPECT_EQ(matchingCategoryFolder("Category Forums"), GmailCategoryFolder::forums);
}

TEST(GmailLabels, QuotesAroundTheLabelGo) {
  EXPECT_EQ(matchingSystemMailbox("\"Important\""), important);
}

TEST(GmailLabels, ReadMarksAndClientFlagsAreNoise) {
  for (const auto* label :
       {"Leído", "leido", "[Gmail]/Unread", "$NotJunk", "\\Seen", "IMAP_flag", "SmartLabel_group", "Opened",
        "Abierto", "Has attachment", "Muted", "Silenciado"}) {
    EXPECT_TRUE(isNoiseLabel(label)) << label;
    EXPECT_EQ(resolveLabel(label).kind, LabelMeaning::Kind::nothing) << label;
  }
}

TEST(GmailLabels, UnreadWithASubLabelIsAUserLabel) {
  EXPECT_FALSE(isNoiseLabel("Unread/Work"));
  EXPECT_EQ(resolveLabel("Unread/Work").kind, LabelMeaning::Kind::user);
}

TEST(GmailLabels, ABlankAfterThePrefixKeepsTheLabelFromMatching) {
  EXPECT_EQ(normalizedLabelKey("[Gmail]/ Spam"), " spam");
  EXPECT_EQ(matchingSystemMailbox("[Gmail]/ Spam"), std::nullopt);
}

TEST(GmailLabels, EmptyAndBlankLabelsAreNoise) {
  EXPECT_TRUE(isNoiseLabel(""));
  EXPECT_TRUE(isNoiseLabel("   "));
}

TEST(GmailLabels, SentMailIsTheMailboxAndSentItemsIsAUserLabel) {
  EXPECT_EQ(matchingSystemMailbox("Sent Mail"), sent);
  EXPECT_EQ(matchingSystemMailbox("Sent Items"), std::nullopt);
  EXPECT_EQ(resolveLabel("Sent Items").kind, LabelMeaning::Kind::user);
}

TEST(GmailLabels, TheKeyKeepsInnerBlanksAndSlashes) {
  EXPECT_EQ(normalizedLabelKey("[Gmail]/Sent Mail"), "sent mail");
  EXPECT_EQ(normalizedLabelKey("Work/Done"), "work/done");
}

TEST(GmailLabels, MailboxesAreKnownInEveryListedLanguage) {
  EXPECT_EQ(matchingSystemMailbox("受信トレイ"), inbox);
  EXPECT_EQ(matchingSystemMailbox("ゴミ箱"), trash);
  EXPECT_EQ(matchingSystemMailbox("받은편지함"), inbox);
  EXPECT_EQ(matchingSystemMailbox("Отправленные"), sent);
  EXPECT_EQ(matchingSystemMailbox("Boîte de réception"), inbox);
  EXPECT_EQ(matchingSystemMailbox("Lixo eletrônico"), spam);
  EXPECT_EQ(matchingSystemMailbox("[Google Mail]/Markiert"), starred);
}

TEST(GmailLabels, TheDecomposedSpellingOfAnAliasMatchesTheComposedOne) {
  EXPECT_EQ(matchingSystemMailbox("コ\u3099ミ箱"), trash);
  EXPECT_EQ(matchingSystemMailbox("Entwu\u0308rfe"), drafts);
}

TEST(GmailLabels, SocialIsATabAndImportanteTheMailbox) {
  EXPECT_EQ(resolveLabel("Social").kind, LabelMeaning::Kind::category);
  EXPECT_EQ(resolveLabel("Importante").mailbox, important);
  EXPECT_EQ(resolveLabel("Sent/2019").kind, LabelMeaning::Kind::user);
}

TEST(GmailLabels, TheScreenOrderDiffersFromTheDeclaration) {
  std::array<GmailSystemMailbox, 9> shown{};
  for (const auto mailbox : allGmailSystemMailboxes) {
    shown.at(static_cast<std::size_t>(appearance(mailbox).sidebarRank)) = mailbox;
  }
  EXPECT_EQ(shown, (std::array{inbox, starred, important, sent, drafts, scheduled, archived, spam, trash}));
}

TEST(GmailLabels, RawValuesReadBack) {
  for (const auto mailbox : allGmailSystemMailboxes) {
    EXPECT_EQ(systemMailboxFromRawValue(appearance(mailbox).rawValue), mailbox);
  }
  for (const auto folder : allGmailCategoryFolders) {
    EXPECT_EQ(categoryFolderFromRawValue(appearance(folder).rawValue), folder);
  }
  EXPECT_EQ(systemMailboxFromRawValue("Inbox"), std::nullopt);
}

}  // namespace
}  // namespace tidewrack
