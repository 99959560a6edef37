#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intelligence/intelligence_service.h"
#include "mail/records.h"
#include "platform/executor.h"
#include "platform/observable.h"
#include "platform/settings.h"
#include "platform/task.h"
#include "reading/detail_rows.h"
#include "reading/html_load_memory.h"

namespace tidewrack {

/// The choice of body, and the background under an HTML body.
enum class BodyDisplayMode { text, html };
enum class HTMLBackgroundPreference { automatic, light, dark };

/// Localised titles of the two pickers' choices, and the icon of a background.
std::string title(BodyDisplayMode mode);
std::string title(HTMLBackgroundPreference preference);
std::string_view icon(HTMLBackgroundPreference preference);
/// "auto", "light", "dark"; any other stored text counts as automatic.
std::string_view rawValue(HTMLBackgroundPreference preference);
HTMLBackgroundPreference htmlBackgroundPreference(std::string_view rawValue);

/// What fills the body area. Two bodies are equal when they share the same text.
struct DetailBody {
  BodyDisplayMode mode = BodyDisplayMode::text;
  SharedHTML html;  ///< Of mode html; null until the stored body has been read.
  HTMLAppearance appearance = HTMLAppearance::light;
  bool invertContent = false;
  std::shared_ptr<const std::string> text;  ///< Of mode text; null until it has been read. May be huge.
  friend bool operator==(const DetailBody&, const DetailBody&) = default;
};

/// Which items of the intelligence row are there. Without a model it is none, and the row is hidden.
struct IntelligenceRow {
  bool summary = false;
  bool category = false;
  bool sentiment = false;
  bool replies = false;
  [[nodiscard]] bool isShown() const { return summary || category || sentiment || replies; }
  friend bool operator==(const IntelligenceRow&, const IntelligenceRow&) = default;
};

/// State and decisions of the message detail. One lives as long as its view; selecting another message goes
/// through setMessage. Bodies are read and resolved on a worker; what comes back for a message that is no
/// longer shown is dropped. A view observes the fields and calls the operations. Main thread only.
class MessageDetail {
 public:
  using MessagePointer = std::shared_ptr<const EmailMessage>;

  /// All three must outlive the detail. Its settings are followed as they change.
  MessageDetail(Executor& executor, Settings& settings, IntelligenceService& intelligence);
  ~MessageDetail();
  MessageDetail(const MessageDetail&) = delete;
  MessageDetail& operator=(const MessageDetail&) = delete;

  /// Shows another message, or none. Another value of the same message (the same id) only refreshes the
  /// header, the badges and the attachments.
  void setMessage(MessagePointer message);
  void setSystemIsDark(bool isDark);
  /// The two pickers. A chosen background is stored as the setting htmlBackgroundMode.
  void setDisplayMode(BodyDisplayMode mode);
  void setHTMLBackground(HTMLBackgroundPreference preference);

  // What the view shows; set by this class only.
  Observable<MessagePointer> message;
  Observable<std::vector<DetailHeaderRow>> headerRows;
  Observable<std::vector<MessageBadge>> badges;
  Observable<std::vector<AttachmentRow>> attachments;
  Observable<bool> hasHTML{false};  ///< Whether the two pickers are there (the second in mode html only).
  Observable<BodyDisplayMode> displayMode{BodyDisplayMode::html};
  Observable<HTMLBackgroundPreference> htmlBackground{HTMLBackgroundPreference::automatic};
  Observable<DetailBody> body;
  Observable<IntelligenceRow> intelligenceRow;

  // The view's own state.
  Observable<std::optional<std::string>> saveErrorMessage;  ///< Shown as an alert, then set to none.
  Observable<std::optional<EmailAttachment>> attachmentToShare;
  Observable<bool> isAttachmentsExpanded{false};
  Observable<std::optional<std::string>> generatedSummary;
  Observable<std::optional<IntelligenceService::EmailCategory>> detectedCategory;
  Observable<std::optional<IntelligenceService::Sentiment>> analyzedSentiment;
  Observable<std::vector<IntelligenceService::ReplySuggestion>> replySuggestions;
  Observable<bool> isGeneratingSummary{false};
  Observable<bool> isDetectingCategory{false};
  Observable<bool> isAnalyzingSentiment{false};
  Observable<bool> isGeneratingReplies{false};
  Observable<std::optional<std::string>> intelligenceError;  ///< Shown as an alert, then set to none.
  Observable<bool> showSummaryPopover{false};
  Observable<bool> showRepliesPopover{false};

  /// The appearance that an HTML body is shown in, and whether the filter turns it over.
  [[nodiscard]] HTMLAppearance effectiveAppearance() const;
  [[nodiscard]] bool invertContent() const;

  /// Reads an attachment and writes its bytes to a file, whichever message is shown by now. A failure goes to
  /// saveErrorMessage.
  Task<> saveAttachment(EmailAttachment attachment, std::string path);

  // The four operations of the intelligence row. Each sets its flag, and an error goes to intelligenceError.
  Task<> generateSummary();
  Task<> detectCategory();
  Task<> analyzeSentiment();
  Task<> generateReplies();

  // What is known of the body; readable by tests.
  [[nodiscard]] const SharedHTML& resolvedHTMLCache() const { return resolvedHTMLCache_; }
  [[nodiscard]] const std::optional<Text>& resolvedHTMLMessageID() const { return resolvedHTMLMessageID_; }
  [[nodiscard]] std::optional<HTMLAppearance> detectedAppearanceHint() const {
    return detectedAppearanceHint_;
  }

 private:
  void showMessage();
  void loadStoredCategory();
  void refreshHeader();
  void refreshBody();
  void refreshIntelligenceRow();
  [[nodiscard]] bool isStillShown(const std::weak_ptr<int>& alive, const MessagePointer& started) const;
  Task<> refreshResolvedHTML();
  Task<> readPlainText();
  template <typename Start, typename Store>
  Task<> runIntelligence(Observable<bool>& isRunning, Start start, Store store);

  Executor& executor_;
  Settings& settings_;
  IntelligenceService& intelligence_;
  bool systemIsDark_ = false;
  std::vector<Subscription> subscriptions_;
  SharedHTML storedHTML_;
  SharedHTML resolvedHTMLCache_;
  std::optional<Text> resolvedHTMLMessageID_;
  std::optional<HTMLAppearance> detectedAppearanceHint_;
  std::shared_ptr<const std::string> plainText_;
  MessagePointer plainTextMessage_;                        ///< The message whose text has been asked for.
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);  ///< Gone when the detail is; tasks look at it.
};

}  // namespace tidewrack
