#include "classify/gmail_labels.h"

#include <string_view>
#include <utility>
#include <vector>

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
        "Abierto", "Has attachment", "Muted", "Silenciado", "read", "has:attachment", "has_attachment"}) {
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

TEST(GmailLabels, EveryAliasIsKnown) {
  const std::vector<std::pair<GmailSystemMailbox, std::vector<const char*>>> mailboxes = {
      {inbox,
       {"inbox", "recibidos", "bandeja de entrada", "posteingang", "boite de reception", "boîte de réception",
        "posta in arrivo", "caixa de entrada", "caixa de entrada (gmail)", "входящие", "受信トレイ", "收件箱",
        "받은편지함"}},
      {sent,
       {"sent", "sent mail", "enviados", "mensajes enviados", "gesendet", "messages envoyes",
        "messages envoyés", "posta inviata", "enviadas", "отправленные", "送信済みメール", "已发送邮件",
        "보낸편지함"}},
      {drafts,
       {"drafts", "draft", "borradores", "entwurfe", "entwürfe", "brouillons", "bozze", "rascunhos",
        "черновики", "下書き", "草稿", "임시보관함"}},
      {important,
       {"important", "importante", "wichtig", "important (gmail)", "importante (gmail)", "[gmail]/important",
        "重要", "중요"}},
      {starred,
       {"starred", "destacados", "destacado", "favorito", "favoritos", "markiert", "suivis", "speciali",
        "com estrela", "помеченные", "スター付き", "已加星标", "별표편지함"}},
      {scheduled,
       {"scheduled", "programados", "programado", "geplant", "programmes", "programmés", "programmati",
        "agendados"}},
      {archived,
       {"archived", "archivados", "archivado", "archiviert", "archivés", "archiviato", "arquivados",
        "arquivado"}},
      {spam,
       {"spam", "junk", "junk e-mail", "junk email", "correo no deseado", "courrier indesirable",
        "courrier indésirable", "posta indesiderata", "lixo eletronico", "lixo eletrônico", "спам",
        "迷惑メール", "垃圾邮件", "스팸"}},
      {trash,
       {"trash", "deleted items", "papelera", "papierkorb", "corbeille", "cestino", "lixeira", "корзина",
        "ゴミ箱", "已删除邮件", "휴지통"}},
  };
  // "archivés" is listed, but a key has no accents, and "archives" is not.
  EXPECT_EQ(resolveLabel("Archivés").kind, LabelMeaning::Kind::user);
  for (const auto& [mailbox, aliases] : mailboxes) {
    for (const auto* alias : aliases) {
      if (std::string_view(alias) != "archivés") {
        EXPECT_EQ(matchingSystemMailbox(alias), mailbox) << alias;
      }
    }
  }
  const std::vector<std::pair<GmailCategoryFolder, std::vector<const char*>>> categories = {
      {GmailCategoryFolder::personal, {"category personal", "categoria personal", "personal"}},
      {GmailCategoryFolder::promotions,
       {"category promotions", "categoria promociones", "categoria promocoes", "categoria promoções",
        "promotions", "promociones", "promoções", "promocoes"}},
      {GmailCategoryFolder::social,
       {"category social", "categoria social", "categoria social (gmail)", "social", "redes sociales",
        "soziale netzwerke"}},
      {GmailCategoryFolder::updates,
       {"category updates", "categoria novedades", "categoria notificacoes", "categoria notificações",
        "updates", "novedades", "actualizaciones", "notifications"}},
      {GmailCategoryFolder::forums,
       {"category forums", "categoria foros", "categoria foruns", "categoria fóruns", "forums", "foros"}},
  };
  for (const auto& [category, aliases] : categories) {
    for (const auto* alias : aliases) {
      EXPECT_EQ(matchingCategoryFolder(alias), category) << alias;
    }
  }
}

TEST(GmailLabels, EveryMailboxAndTabHasItsLook) {
  struct Look {
    const char* title;
    const char* key;
    const char* icon;
    const char* tint;
    int rank;
  };
  const auto expect = [](const LabelAppearance& appearance, const Look& look) {
    EXPECT_STREQ(appearance.defaultTitle, look.title);
    EXPECT_STREQ(appearance.titleKey, look.key);
    EXPECT_EQ(appearance.icon, look.icon) << look.title;
    EXPECT_EQ(appearance.tint, look.tint) << look.title;
    EXPECT_EQ(appearance.sidebarRank, look.rank) << look.title;
  };
  expect(appearance(inbox), {"Inbox", "mailbox_inbox", "tray.fill", "blue", 0});
  expect(appearance(starred), {"Starred", "mailbox_starred", "star.fill", "yellow", 1});
  expect(appearance(important),
         {"Important", "mailbox_important", "exclamationmark.circle.fill", "yellow", 2});
  expect(appearance(sent), {"Sent", "mailbox_sent", "paperplane.fill", "indigo", 3});
  expect(appearance(drafts), {"Drafts", "mailbox_drafts", "doc.text.fill", "gray", 4});
  expect(appearance(scheduled), {"Scheduled", "mailbox_scheduled", "clock.fill", "purple", 5});
  expect(appearance(archived), {"Archived", "mailbox_archived", "archivebox.fill", "brown", 6});
  expect(appearance(spam), {"Spam", "mailbox_spam", "exclamationmark.octagon.fill", "orange", 7});
  expect(appearance(trash), {"Trash", "mailbox_trash", "trash.fill", "red", 8});
  using Tab = GmailCategoryFolder;
  expect(appearance(Tab::personal),
         {"Personal", "gmail_category_personal", "person.crop.circle.fill", "teal", 0});
  expect(appearance(Tab::updates), {"Updates", "gmail_category_updates", "bell.circle.fill", "mint", 1});
  expect(appearance(Tab::promotions),
         {"Promotions", "gmail_category_promotions", "tag.circle.fill", "pink", 2});
  expect(appearance(Tab::social), {"Social", "gmail_category_social", "person.2.circle.fill", "cyan", 3});
  expect(appearance(Tab::forums),
         {"Forums", "gmail_category_forums", "bubble.left.and.bubble.right.fill", "indigo", 4});
}

TEST(GmailLabels, BlanksInsideQuotesStay) {
  EXPECT_EQ(normalizedLabelKey("\" Inbox\""), " inbox");
  EXPECT_EQ(matchingSystemMailbox("\" Inbox\""), std::nullopt);
}

TEST(GmailLabels, OnlyOneClientPrefixGoes) {
  EXPECT_EQ(normalizedLabelKey("[Gmail]/[Imap]/Spam"), "[imap]/spam");
  EXPECT_EQ(resolveLabel("[Gmail]/[Imap]/Spam").kind, LabelMeaning::Kind::user);
}

TEST(GmailLabels, AClientFlagBehindAPrefixIsAUserLabel) {
  EXPECT_FALSE(isNoiseLabel("[Imap]/imap_x"));
}

TEST(GmailLabels, TheDottedCapitalIOfTurkishIsAnI) {
  EXPECT_EQ(matchingSystemMailbox("İnbox"), inbox);
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
