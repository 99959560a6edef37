#include "classify/gmail_labels.h"

#include <unordered_set>
#include <vector>

#include "platform/localized.h"
#include "platform/normalization.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

constexpr std::array<LabelAppearance, 9> mailboxAppearances = {{
    {"inbox", "mailbox_inbox", "Inbox", "System mailbox: Inbox", "tray.fill", "blue", 0},
    {"sent", "mailbox_sent", "Sent", "System mailbox: Sent", "paperplane.fill", "indigo", 3},
    {"drafts", "mailbox_drafts", "Drafts", "System mailbox: Drafts", "doc.text.fill", "gray", 4},
    {"important", "mailbox_important", "Important", "System mailbox: Important",
     "exclamationmark.circle.fill", "yellow", 2},
    {"starred", "mailbox_starred", "Starred", "System mailbox: Starred", "star.fill", "yellow", 1},
    {"scheduled", "mailbox_scheduled", "Scheduled", "System mailbox: Scheduled", "clock.fill", "purple", 5},
    {"archived", "mailbox_archived", "Archived", "System mailbox: Archived", "archivebox.fill", "brown", 6},
    {"spam", "mailbox_spam", "Spam", "System mailbox: Spam", "exclamationmark.octagon.fill", "orange", 7},
    {"trash", "mailbox_trash", "Trash", "System mailbox: Trash", "trash.fill", "red", 8},
}};

constexpr std::array<LabelAppearance, 5> categoryAppearances = {{
    {"personal", "gmail_category_personal", "Personal", "Gmail tab: Personal", "person.crop.circle.fill",
     "teal", 0},
    {"promotions", "gmail_category_promotions", "Promotions", "Gmail tab: Promotions", "tag.circle.fill",
     "pink", 2},
    {"social", "gmail_category_social", "Social", "Gmail tab: Social", "person.2.circle.fill", "cyan", 3},
    {"updates", "gmail_category_updates", "Updates", "Gmail tab: Updates", "bell.circle.fill", "mint", 1},
    {"forums", "gmail_category_forums", "Forums", "Gmail tab: Forums", "bubble.left.and.bubble.right.fill",
     "indigo", 4},
}};

using Aliases = std::vector<std::string_view>;

// Both spellings of an accented alias stand here; a key is folded, so only the plain one can match.
const std::array<Aliases, 9> mailboxAliases = {{
    {"inbox", "recibidos", "bandeja de entrada", "posteingang", "boite de reception", "boîte de réception",
     "posta in arrivo", "caixa de entrada", "caixa de entrada (gmail)", "входящие", "受信トレイ", "收件箱",
     "받은편지함"},
    {"sent", "sent mail", "enviados", "mensajes enviados", "gesendet", "messages envoyes", "messages envoyés",
     "posta inviata", "enviadas", "отправленные", "送信済みメール", "已发送邮件", "보낸편지함"},
    {"drafts", "draft", "borradores", "entwurfe", "entwürfe", "brouillons", "bozze", "rascunhos", "черновики",
     "下書き", "草稿", "임시보관함"},
    {"important", "importante", "wichtig", "important (gmail)", "importante (gmail)", "[gmail]/important",
     "重要", "중요"},
    {"starred", "destacados", "destacado", "favorito", "favoritos", "markiert", "suivis", "speciali",
     "com estrela", "помеченные", "スター付き", "已加星标", "별표편지함"},
    {"scheduled", "programados", "programado", "geplant", "programmes", "programmés", "programmati",
     "agendados"},
    {"archived", "archivados", "archivado", "archiviert", "archivés", "archiviato", "arquivados",
     "arquivado"},
    {"spam", "junk", "junk e-mail", "junk email", "correo no deseado", "courrier indesirable",
     "courrier indésirable", "posta indesiderata", "lixo eletronico", "lixo eletrônico", "спам", "迷惑メール",
     "垃圾邮件", "스팸"},
    {"trash", "deleted items", "papelera", "papierkorb", "corbeille", "cestino", "lixeira", "корзина",
     "ゴミ箱", "已删除邮件", "휴지통"},
}};

const std::array<Aliases, 5> categoryAliases = {{
    {"category personal", "categoria personal", "personal"},
    {"category promotions", "categoria promociones", "categoria promocoes", "categoria promoções",
     "promotions", "promociones", "promoções", "promocoes"},
    {"category social", "categoria social", "categoria social (gmail)", "social", "redes sociales",
     "soziale netzwerke"},
    {"category updates", "categoria novedades", "categoria notificacoes", "categoria notificações", "updates",
     "novedades", "actualizaciones", "notifications"},
    {"category forums", "categoria foros", "categoria foruns", "categoria fóruns", "forums", "foros"},
}};

constexpr std::array<std::string_view, 11> noiseKeys = {
    "unread",         "read",           "opened",         "abierto", "leido",     "leído",
    "has attachment", "has:attachment", "has_attachment", "muted",   "silenciado"};
constexpr std::array<std::string_view, 4> noisePrefixes = {"imap_", "$", "\\", "smartlabel_"};
constexpr std::array<std::string_view, 3> clientPrefixes = {"[gmail]/", "[google mail]/", "[imap]/"};

// Every alias with the index of its case; the first case that lists an alias keeps it.
template <std::size_t Count>
std::unordered_map<std::string_view, int> indexAliases(const std::array<Aliases, Count>& aliases) {
  std::unordered_map<std::string_view, int> index;
  for (std::size_t i = 0; i < Count; ++i) {
    for (const auto alias : aliases[i]) {
      index.emplace(alias, static_cast<int>(i));
    }
  }
  return index;
}

std::optional<int> mailboxOfKey(const std::string& key) {
  static const auto index = indexAliases(mailboxAliases);
  const auto found = index.find(key);
  return found == index.end() ? std::nullopt : std::optional(found->second);
}

std::optional<int> categoryOfKey(const std::string& key) {
  static const auto index = indexAliases(categoryAliases);
  const auto found = index.find(key);
  return found == index.end() ? std::nullopt : std::optional(found->second);
}

bool isNoise(std::string_view trimmed, const std::string& key) {
  if (trimmed.empty()) {
    return true;
  }
  const std::string lower = lowercase(trimmed);
  for (const auto prefix : noisePrefixes) {
    if (lower.starts_with(prefix)) {
      return true;
    }
  }
  for (const auto noise : noiseKeys) {
    if (key == noise) {
      return true;
    }
  }
  return false;
}

std::string_view trimQuotesAndBackslashes(std::string_view text) {
  const auto first = text.find_first_not_of("\"\\");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of("\"\\") - first + 1);
}

std::string joinedComponents(std::string_view label) {
  std::string path;
  while (true) {
    const auto slash = label.find('/');
    const auto component = trimWhitespaceAndNewlines(label.substr(0, slash));
    if (!component.empty()) {
      if (!path.empty()) {
        path += '/';
      }
      path += component;
    }
    if (slash == std::string_view::npos) {
      return path;
    }
    label.remove_prefix(slash + 1);
  }
}

}  // namespace

const LabelAppearance& appearance(GmailSystemMailbox mailbox) {
  return mailboxAppearances.at(static_cast<std::size_t>(mailbox));
}

const LabelAppearance& appearance(GmailCategoryFolder folder) {
  return categoryAppearances.at(static_cast<std::size_t>(folder));
}

std::string title(GmailSystemMailbox mailbox) {
  const auto& look = appearance(mailbox);
  return localized(look.titleKey, look.defaultTitle, look.comment);
}

std::string title(GmailCategoryFolder folder) {
  const auto& look = appearance(folder);
  return localized(look.titleKey, look.defaultTitle, look.comment);
}

std::optional<GmailSystemMailbox> systemMailboxFromRawValue(std::string_view rawValue) {
  for (const auto mailbox : allGmailSystemMailboxes) {
    if (appearance(mailbox).rawValue == rawValue) {
      return mailbox;
    }
  }
  return std::nullopt;
}

std::optional<GmailCategoryFolder> categoryFolderFromRawValue(std::string_view rawValue) {
  for (const auto folder : allGmailCategoryFolders) {
    if (appearance(folder).rawValue == rawValue) {
      return folder;
    }
  }
  return std::nullopt;
}

std::string normalizedLabelKey(std::string_view label) {
  std::string_view trimmed = trimQuotesAndBackslashes(trimWhitespaceAndNewlines(label));
  for (const auto prefix : clientPrefixes) {
    // The prefixes are ASCII and no other letter has one of theirs as its lower case but the Kelvin sign,
    // which none of them holds; so the comparison can stay with bytes.
    if (trimmed.size() >= prefix.size() && lowercase(trimmed.substr(0, prefix.size())) == prefix) {
      trimmed.remove_prefix(prefix.size());
      break;
    }
  }
  return canonicallyComposed(lowercase(foldDiacritics(trimmed)));
}

std::optional<GmailSystemMailbox> matchingSystemMailbox(std::string_view label) {
  const auto found = mailboxOfKey(normalizedLabelKey(label));
  return found ? std::optional(static_cast<GmailSystemMailbox>(*found)) : std::nullopt;
}

std::optional<GmailCategoryFolder> matchingCategoryFolder(std::string_view label) {
  const auto found = categoryOfKey(normalizedLabelKey(label));
  return found ? std::optional(static_cast<GmailCategoryFolder>(*found)) : std::nullopt;
}

bool isNoiseLabel(std::string_view label) {
  return isNoise(trimWhitespaceAndNewlines(label), normalizedLabelKey(label));
}

LabelMeaning resolveLabel(std::string_view label) {
  LabelMeaning meaning;
  const auto trimmed = trimWhitespaceAndNewlines(label);
  const std::string key = normalizedLabelKey(label);
  if (isNoise(trimmed, key)) {
    return meaning;
  }
  if (const auto mailbox = mailboxOfKey(key)) {
    meaning.kind = LabelMeaning::Kind::mailbox;
    meaning.mailbox = static_cast<GmailSystemMailbox>(*mailbox);
    return meaning;
  }
  if (const auto category = categoryOfKey(key)) {
    meaning.kind = LabelMeaning::Kind::category;
    meaning.category = static_cast<GmailCategoryFolder>(*category);
    return meaning;
  }
  meaning.kind = LabelMeaning::Kind::user;
  meaning.path = joinedComponents(trimmed);
  meaning.filterText = trimQuotesAndBackslashes(trimmed);
  if (meaning.path.empty() && meaning.filterText.empty()) {
    meaning.kind = LabelMeaning::Kind::nothing;
  }
  return meaning;
}

}  // namespace tidewrack
