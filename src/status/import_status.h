#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tidewrack {

/// The steps of the long operations, in the order of the work.
enum class ImportProgressStep {
  preparing,
  copyingFiles,
  parsingMessages,
  savingMessages,
  rebuildingIndex,
  indexingSpotlight
};
enum class DatabaseLoadStep { openingDatabase, loadingLibraries, loadingMessages, loadingIndex };
enum class DeleteProgressStep { preparing, deletingFile, deletingMessages, rebuildingIndex };

inline constexpr std::array allImportProgressSteps = {
    ImportProgressStep::preparing,       ImportProgressStep::copyingFiles,
    ImportProgressStep::parsingMessages, ImportProgressStep::savingMessages,
    ImportProgressStep::rebuildingIndex, ImportProgressStep::indexingSpotlight};
inline constexpr std::array allDatabaseLoadSteps = {
    DatabaseLoadStep::openingDatabase, DatabaseLoadStep::loadingLibraries, DatabaseLoadStep::loadingMessages,
    DatabaseLoadStep::loadingIndex};
inline constexpr std::array allDeleteProgressSteps = {
    DeleteProgressStep::preparing, DeleteProgressStep::deletingFile, DeleteProgressStep::deletingMessages,
    DeleteProgressStep::rebuildingIndex};

/// The sentence that stands in the panel's message.
std::string message(ImportProgressStep step);
std::string message(DatabaseLoadStep step);
std::string message(DeleteProgressStep step);
/// The short label that stands in the checklist.
std::string detailTitle(ImportProgressStep step);
std::string detailTitle(DatabaseLoadStep step);
std::string detailTitle(DeleteProgressStep step);

enum class StatusDetailState { pending, active, completed };

/// One row of the checklist.
struct StatusDetail {
  std::string id;  ///< Unique within the list; stays the same while a count in the text grows.
  std::string text;
  StatusDetailState state = StatusDetailState::pending;
  friend bool operator==(const StatusDetail&, const StatusDetail&) = default;
};

/// How a long operation stands. A plain value, compared by case and payload; everything shown of it is
/// derived here, and nothing here can fail.
class ImportStatus {
 public:
  struct Importing {
    ImportProgressStep step{};
    std::optional<std::string> fileName;
    int completedFiles = 0;
    int totalFiles = 0;
    int librariesCount = 0;
    int messagesCount = 0;
    friend bool operator==(const Importing&, const Importing&) = default;
  };
  struct LoadingDatabase {
    DatabaseLoadStep step{};
    friend bool operator==(const LoadingDatabase&, const LoadingDatabase&) = default;
  };
  struct RestoringFromiCloud {
    int messagesCount = 0;
    friend bool operator==(const RestoringFromiCloud&, const RestoringFromiCloud&) = default;
  };
  struct Success {
    int librariesCount = 0;
    int messagesCount = 0;
    friend bool operator==(const Success&, const Success&) = default;
  };
  struct RestoreSuccess {
    int messagesCount = 0;
    friend bool operator==(const RestoreSuccess&, const RestoreSuccess&) = default;
  };
  struct Indexed {
    int messagesCount = 0;
    friend bool operator==(const Indexed&, const Indexed&) = default;
  };
  struct Deleting {
    DeleteProgressStep step{};
    std::string libraryName;
    int messagesCount = 0;
    friend bool operator==(const Deleting&, const Deleting&) = default;
  };
  struct DeleteSuccess {
    std::string libraryName;
    int messagesCount = 0;
    friend bool operator==(const DeleteSuccess&, const DeleteSuccess&) = default;
  };
  struct Error {
    std::string message;  ///< A finished sentence.
    friend bool operator==(const Error&, const Error&) = default;
  };
  using Value = std::variant<Importing, LoadingDatabase, RestoringFromiCloud, Success, RestoreSuccess,
                             Indexed, Deleting, DeleteSuccess, Error>;

  template <typename Case, typename = std::enable_if_t<std::is_constructible_v<Value, Case>>>
  ImportStatus(Case value)
      : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor): a case is one.

  [[nodiscard]] const Value& value() const { return value_; }
  /// The payload of one case, or null: `status.as<ImportStatus::Error>()`.
  template <typename Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&value_);
  }

  [[nodiscard]] std::string title() const;
  /// One to three lines, joined by line feeds.
  [[nodiscard]] std::string message() const;
  /// Between 0 and 1; an import stays at or below 0.98. Absent where nothing is known to measure.
  [[nodiscard]] std::optional<double> progressFraction() const;
  /// The checklist; may be empty.
  [[nodiscard]] std::vector<StatusDetail> detailItems() const;
  /// Platform symbol name.
  [[nodiscard]] std::string_view icon() const;
  /// Colour name of the icon and of the dismiss button.
  [[nodiscard]] std::string_view color() const;
  /// Whether the operation is under way. Such a status has a bar (an indeterminate one without a fraction)
  /// and cannot be dismissed; every other has the dismiss button instead.
  [[nodiscard]] bool isRunning() const;
  [[nodiscard]] bool showsBar() const { return isRunning(); }
  [[nodiscard]] bool showsDismissButton() const { return !isRunning(); }

  friend bool operator==(const ImportStatus&, const ImportStatus&) = default;

 private:
  Value value_;
};

/// Text of the dismiss button.
std::string statusDismissTitle();

/// Symbol and colour of the mark before a checklist row ("secondary" is the colour of secondary text).
std::string_view icon(StatusDetailState state);
std::string_view color(StatusDetailState state);

/// Measures of the panel, in points.
struct StatusPanelMetrics {
  static constexpr int iconSize = 50;
  static constexpr int itemSpacing = 18;
  static constexpr int rowSpacing = 8;
  static constexpr int markWidth = 14;
  static constexpr int markSpacing = 8;
  static constexpr int rowMaximumLines = 2;
  static constexpr int listCornerRadius = 8;
  static constexpr double listBackgroundOpacity = 0.1;
  static constexpr int buttonCornerRadius = 10;
  static constexpr double buttonBackgroundOpacity = 0.15;
  static constexpr int overlayPadding = 30;
  static constexpr int sheetPadding = 24;
  static constexpr int overlayMaximumWidth = 450;
};

/// Decoration of the panel where it lies over other content; none elsewhere.
struct ImportStatusOverlayChrome {
  bool isOverlay = false;

  static constexpr int minimumWidth = 350;
  static constexpr int cornerRadius = 16;
  static constexpr int shadowRadius = 20;
  static constexpr double shadowOpacity = 0.33;
};

}  // namespace tidewrack
