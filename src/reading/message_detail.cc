#include "reading/message_detail.h"

#include <exception>
#include <utility>

#include "mail/html_text.h"
#include "platform/files.h"
#include "platform/localized.h"
#include "platform/unicode.h"
#include "reading/inline_images.h"

namespace tidewrack {
namespace {

using MessagePointer = MessageDetail::MessagePointer;

/// A stored HTML body as a worker has read it.
struct StoredHTML {
  SharedHTML html;  ///< Null when it could not be read.
  bool isBlank = true;
  std::optional<HTMLAppearance> hint;
};

StoredHTML readStoredHTML(const EmailMessage& message) {
  StoredHTML stored;
  try {
    auto html = std::make_shared<const std::string>(message.htmlBody->bytes());
    stored.isBlank = trimWhitespaceAndNewlines(*html).empty();
    stored.hint = appearanceHint(*html);
    stored.html = std::move(html);
  } catch (const std::exception&) {
    // The text of the message will say why.
  }
  return stored;
}

/// The body with its images, or as it is where they cannot be read.
SharedHTML resolve(const EmailMessage& message, const SharedHTML& stored) {
  try {
    return std::make_shared<const std::string>(replaceInlineImages(*stored, inlineImages(message)));
  } catch (const std::exception&) {
    return stored;
  }
}

std::string plainTextToShow(const EmailMessage& message) {
  try {
    std::string text = message.plainBody ? message.plainBody->bytes() : std::string();
    if (!text.empty()) {
      return text;
    }
    const std::string html = message.htmlBody ? message.htmlBody->bytes() : std::string();
    if (!html.empty()) {
      return HTMLTextExtractor::extractText(html);
    }
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return localized("no_body_available", "No body available", "Missing body placeholder");
}

}  // namespace

std::string title(BodyDisplayMode mode) {
  return mode == BodyDisplayMode::text ? localized("body_mode_text", "Text", "Body display mode")
                                       : localized("body_mode_html", "HTML", "Body display mode");
}

std::string title(HTMLBackgroundPreference preference) {
  switch (preference) {
    case HTMLBackgroundPreference::automatic:
      return localized("html_background_auto", "Auto", "HTML background follows system appearance");
    case HTMLBackgroundPreference::light:
      return localized("html_background_light", "Light", "HTML background forced to light");
    case HTMLBackgroundPreference::dark:
      return localized("html_background_dark", "Dark", "HTML background forced to dark");
  }
  return {};
}

std::string_view icon(HTMLBackgroundPreference preference) {
  switch (preference) {
    case HTMLBackgroundPreference::automatic:
      return "circle.lefthalf.filled";
    case HTMLBackgroundPreference::light:
      return "sun.max";
    case HTMLBackgroundPreference::dark:
      return "moon";
  }
  return {};
}

std::string_view rawValue(HTMLBackgroundPreference preference) {
  switch (preference) {
    case HTMLBackgroundPreference::automatic:
      return "auto";
    case HTMLBackgroundPreference::light:
      return "light";
    case HTMLBackgroundPreference::dark:
      return "dark";
  }
  return {};
}

HTMLBackgroundPreference htmlBackgroundPreference(std::string_view text) {
  if (text == "light") {
    return HTMLBackgroundPreference::light;
  }
  return text == "dark" ? HTMLBackgroundPreference::dark : HTMLBackgroundPreference::automatic;
}

MessageDetail::MessageDetail(Executor& executor, Settings& settings, IntelligenceService& intelligence)
    : executor_(executor), settings_(settings), intelligence_(intelligence) {
  const auto readBackground = [this] {
    htmlBackground.set(htmlBackgroundPreference(settings_.string(SettingKey::htmlBackgroundMode)));
    refreshBody();
  };
  readBackground();
  subscriptions_.push_back(settings_.observe(SettingKey::htmlBackgroundMode, readBackground));
  for (const auto key :
       {SettingKey::intelligenceEnabled, SettingKey::enableSmartSummaries, SettingKey::enableSmartReply,
        SettingKey::enableCategoryDetection, SettingKey::enableSentimentAnalysis}) {
    subscriptions_.push_back(settings_.observe(key, [this] { refreshIntelligenceRow(); }));
  }
  refreshIntelligenceRow();
}

MessageDetail::~MessageDetail() = default;

void MessageDetail::setMessage(MessagePointer newMessage) {
  const auto old = message();
  if (old && old == newMessage) {
    return;  // Another message has changed.
  }
  const bool isSame = old && newMessage && old->id == newMessage->id;
  message.set(std::move(newMessage));
  refreshHeader();
  if (!isSame) {
    showMessage();
  }
}

void MessageDetail::setSystemIsDark(bool isDark) {
  systemIsDark_ = isDark;
  refreshBody();
}

void MessageDetail::setDisplayMode(BodyDisplayMode mode) {
  displayMode.set(mode);
  refreshBody();
}

void MessageDetail::setHTMLBackground(HTMLBackgroundPreference preference) {
  settings_.set(SettingKey::htmlBackgroundMode, std::string(rawValue(preference)));
}

HTMLAppearance MessageDetail::effectiveAppearance() const {
  switch (htmlBackground()) {
    case HTMLBackgroundPreference::light:
      return HTMLAppearance::light;
    case HTMLBackgroundPreference::dark:
      return HTMLAppearance::dark;
    case HTMLBackgroundPreference::automatic:
      break;
  }
  return detectedAppearanceHint_.value_or(systemIsDark_ ? HTMLAppearance::dark : HTMLAppearance::light);
}

bool MessageDetail::invertContent() const {
  return htmlBackground() != HTMLBackgroundPreference::automatic &&
         detectedAppearanceHint_.value_or(HTMLAppearance::light) != effectiveAppearance();
}

// The steps of a change of message. Until its HTML has been read, a body that is there counts as not blank.
void MessageDetail::showMessage() {
  const auto shown = message();
  hasHTML.set(shown && shown->htmlBody);
  displayMode.set(hasHTML() ? BodyDisplayMode::html : BodyDisplayMode::text);
  generatedSummary.set(std::nullopt);
  detectedCategory.set(std::nullopt);
  analyzedSentiment.set(std::nullopt);
  replySuggestions.set({});
  showSummaryPopover.set(false);
  showRepliesPopover.set(false);
  loadStoredCategory();
  storedHTML_.reset();
  resolvedHTMLCache_.reset();
  resolvedHTMLMessageID_.reset();
  detectedAppearanceHint_.reset();
  plainText_.reset();
  plainTextMessage_.reset();
  refreshIntelligenceRow();
  if (shown) {
    refreshResolvedHTML();
  }
  refreshBody();
}

void MessageDetail::loadStoredCategory() {
  const auto shown = message();
  if (!shown || !shown->category || shown->category->empty()) {
    return;
  }
  const auto category = emailCategoryFromRawValue(*shown->category);
  detectedCategory.set(category ? *category : parseEmailCategory(*shown->category));
}

void MessageDetail::refreshHeader() {
  const auto shown = message();
  headerRows.set(shown ? detailHeaderRows(*shown) : std::vector<DetailHeaderRow>());
  badges.set(shown ? messageBadges(shown->labels) : std::vector<MessageBadge>());
  attachments.set(shown ? attachmentRows(shown->attachments) : std::vector<AttachmentRow>());
}

void MessageDetail::refreshBody() {
  const auto shown = message();
  DetailBody newBody;
  if (shown && hasHTML() && displayMode() == BodyDisplayMode::html) {
    newBody.mode = BodyDisplayMode::html;
    newBody.html = resolvedHTMLMessageID_ == shown->id ? resolvedHTMLCache_ : storedHTML_;
    newBody.appearance = effectiveAppearance();
    newBody.invertContent = invertContent();
  } else if (shown) {
    newBody.text = plainText_;
    if (!plainText_ && plainTextMessage_ != shown) {
      readPlainText();
    }
  }
  body.set(std::move(newBody));
}

void MessageDetail::refreshIntelligenceRow() {
  IntelligenceRow row;
  if (settings_.boolean(SettingKey::intelligenceEnabled) &&
      intelligence_.checkAvailability().kind == IntelligenceService::Availability::Kind::available) {
    row.summary = settings_.boolean(SettingKey::enableSmartSummaries);
    row.replies = settings_.boolean(SettingKey::enableSmartReply);
    row.category = settings_.boolean(SettingKey::enableCategoryDetection);
    row.sentiment = settings_.boolean(SettingKey::enableSentimentAnalysis);
  }
  intelligenceRow.set(row);
}

bool MessageDetail::isStillShown(const std::weak_ptr<int>& alive, const MessagePointer& started) const {
  return !alive.expired() && message() && message()->id == started->id;
}

// Reads the stored body first and shows it, with its images missing, until they are in place. A message
// without such images is ready at once.
Task<> MessageDetail::refreshResolvedHTML() {
  const MessagePointer started = message();
  if (!started->htmlBody) {
    resolvedHTMLMessageID_ = started->id;
    co_return;
  }
  const std::weak_ptr<int> alive = alive_;
  auto& executor = executor_;
  const auto read = [started] { return readStoredHTML(*started); };
  const StoredHTML stored = co_await inBackground(executor, TaskPriority::userInitiated, read);
  if (alive.expired() || !isStillShown(alive, started)) {
    co_return;
  }
  storedHTML_ = stored.html;
  detectedAppearanceHint_ = stored.hint;
  if (stored.isBlank) {
    hasHTML.set(false);
    displayMode.set(BodyDisplayMode::text);
  }
  if (stored.html && hasInlineReferences(*started)) {
    refreshBody();
    const auto replaceImages = [started, html = stored.html] { return resolve(*started, html); };
    const SharedHTML resolved = co_await inBackground(executor, TaskPriority::userInitiated, replaceImages);
    if (alive.expired() || !isStillShown(alive, started)) {
      co_return;
    }
    resolvedHTMLCache_ = resolved;
  } else {
    resolvedHTMLCache_ = stored.html;
  }
  resolvedHTMLMessageID_ = started->id;
  refreshBody();
}

Task<> MessageDetail::readPlainText() {
  const MessagePointer started = message();
  plainTextMessage_ = started;
  const std::weak_ptr<int> alive = alive_;
  const auto read = [started] { return std::make_shared<const std::string>(plainTextToShow(*started)); };
  const auto text = co_await inBackground(executor_, TaskPriority::userInitiated, read);
  if (alive.expired() || !isStillShown(alive, started)) {
    co_return;
  }
  plainText_ = text;
  refreshBody();
}

Task<> MessageDetail::saveAttachment(EmailAttachment attachment, std::string path) {
  const std::weak_ptr<int> alive = alive_;
  const auto save = [data = attachment.data, path] { writeFileAtomically(path, data.bytes()); };
  std::optional<std::string> failureText;
  try {
    co_await inBackground(executor_, TaskPriority::userInitiated, save);
  } catch (const std::exception& failure) {
    failureText = failure.what();
  }
  if (failureText && !alive.expired()) {
    saveErrorMessage.set(failureText);
  }
}

}  // namespace tidewrack
