#include "status/import_status.h"

#include <algorithm>

#include "platform/localized.h"

namespace tidewrack {

namespace {

// Calls `visit` with the payload; one lambda a case.
template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

// A text of the interface before it is looked up.
struct StatusText {
  const char* key;
  const char* text;
  const char* comment;

  [[nodiscard]] std::string localizedText() const { return localized(key, text, comment); }
};

constexpr const char* importStepComment = "Import progress step";
constexpr const char* importDetailComment = "Import progress detail";
constexpr const char* loadStepComment = "Database load progress step";
constexpr const char* loadDetailComment = "Database load progress detail";
constexpr const char* deleteStepComment = "Delete progress step";
constexpr const char* deleteDetailComment = "Delete progress detail";

struct StepTexts {
  StatusText message;
  StatusText detail;
};

constexpr std::array<StepTexts, 6> importSteps = {{
    {{"import_step_preparing_message", "Preparing selected files…", importStepComment},
     {"import_step_preparing", "Prepare import", importDetailComment}},
    {{"import_step_copying_message", "Copying MBOX files into the app library…", importStepComment},
     {"import_step_copying", "Copy files", importDetailComment}},
    {{"import_step_parsing_message", "Reading headers, bodies, labels, and attachments…", importStepComment},
     {"import_step_parsing", "Parse messages and attachments", importDetailComment}},
    {{"import_step_saving_message", "Saving imported messages locally…", importStepComment},
     {"import_step_saving", "Save messages", importDetailComment}},
    {{"import_step_search_index_message", "Updating the in-app search index…", importStepComment},
     {"import_step_search_index", "Rebuild search index", importDetailComment}},
    {{"import_step_spotlight_message", "Updating Spotlight, if enabled…", importStepComment},
     {"import_step_spotlight", "Index in Spotlight", importDetailComment}},
}};

constexpr std::array<StepTexts, 4> loadSteps = {{
    {{"load_step_opening_message", "Opening local database…", loadStepComment},
     {"load_step_opening", "Open database", loadDetailComment}},
    {{"load_step_libraries_message", "Loading imported libraries…", loadStepComment},
     {"load_step_libraries", "Read libraries", loadDetailComment}},
    {{"load_step_messages_message", "Loading stored messages…", loadStepComment},
     {"load_step_messages", "Read messages", loadDetailComment}},
    {{"load_step_index_message", "Restoring search index…", loadStepComment},
     {"load_step_index", "Rebuild search index", loadDetailComment}},
}};

constexpr std::array<StepTexts, 4> deleteSteps = {{
    {{"delete_step_preparing_message", "Preparing deletion…", deleteStepComment},
     {"delete_step_preparing", "Prepare deletion", deleteDetailComment}},
    {{"delete_step_file_message", "Removing the stored MBOX file…", deleteStepComment},
     {"delete_step_file", "Remove library file", deleteDetailComment}},
    {{"delete_step_messages_message", "Removing imported messages…", deleteStepComment},
     {"delete_step_messages", "Remove stored messages", deleteDetailComment}},
    {{"delete_step_index_message", "Rebuilding the search index…", deleteStepComment},
     {"delete_step_index", "Rebuild search index", deleteDetailComment}},
}};

const StepTexts& texts(ImportProgressStep step) {
  return importSteps[static_cast<std::size_t>(step)];
}
const StepTexts& texts(DatabaseLoadStep step) {
  return loadSteps[static_cast<std::size_t>(step)];
}
const StepTexts& texts(DeleteProgressStep step) {
  return deleteSteps[static_cast<std::size_t>(step)];
}

// Title, icon and colour of each case, in the order of the cases.
struct CaseAppearance {
  StatusText title;
  std::string_view icon;
  std::string_view color;
};

constexpr std::array<CaseAppearance, std::variant_size_v<ImportStatus::Value>> caseAppearances = {{
    {{"importing_title", "Importing Messages…", "Importing status title"}, "arrow.down.doc", "blue"},
    {{"loading_database_title", "Loading Library…", "Loading database title"}, "tray.full", "blue"},
    {{"restoring_icloud_title", "Restoring from iCloud…", "Restoring status title"},
     "icloud.and.arrow.down",
     "blue"},
    {{"import_success_title", "Import Successful", "Success status title"}, "checkmark.circle.fill", "green"},
    {{"restore_success_title", "Restore Complete", "Restore success title"},
     "checkmark.icloud.fill",
     "green"},
    {{"indexed_title", "Indexed Successfully", "Indexed status title"},
     "magnifyingglass.circle.fill",
     "purple"},
    {{"delete_progress_title", "Deleting Library…", "Delete progress title"}, "trash", "red"},
    {{"delete_success_title", "Library Deleted", "Delete success title"}, "checkmark.circle.fill", "green"},
    {{"import_error_title", "Import Error", "Error status title"}, "exclamationmark.triangle.fill", "red"},
}};

template <typename Step>
StatusDetailState stateOf(Step row, Step present) {
  if (row < present) {
    return StatusDetailState::completed;
  }
  return row == present ? StatusDetailState::active : StatusDetailState::pending;
}

template <typename Step, std::size_t count>
std::vector<StatusDetail> stepRows(const std::array<Step, count>& steps, Step present) {
  std::vector<StatusDetail> rows;
  for (const Step step : steps) {
    const std::string title = detailTitle(step);
    rows.push_back({title, title, stateOf(step, present)});
  }
  return rows;
}

std::vector<StatusDetail> importRows(const ImportStatus::Importing& status) {
  auto rows = stepRows(allImportProgressSteps, status.step);
  // A count belongs to its row, whatever the present step, so that a completed row keeps it.
  const auto append = [&rows](ImportProgressStep step, const std::string& count) {
    rows[static_cast<std::size_t>(step)].text += " - " + count;
  };
  if (status.messagesCount >= 1) {
    append(ImportProgressStep::savingMessages,
           formatText(
               localized("progress_messages_found_format", "%d message(s)", "Messages found progress detail"),
               {static_cast<long long>(status.messagesCount)}));
  }
  if (status.librariesCount > 0) {
    append(ImportProgressStep::copyingFiles,
           formatText(localized("progress_libraries_created_format", "%d library(ies)",
                                "Libraries created progress detail"),
                      {static_cast<long long>(status.librariesCount)}));
  }
  return rows;
}

std::vector<StatusDetail> completedRows(std::initializer_list<StatusText> texts) {
  std::vector<StatusDetail> rows;
  for (const auto& text : texts) {
    const std::string row = text.localizedText();
    rows.push_back({row, row, StatusDetailState::completed});
  }
  return rows;
}

std::string importMessage(const ImportStatus::Importing& status) {
  std::string lines = message(status.step);
  if (status.fileName) {
    lines += '\n' + formatText(localized("progress_current_file_format", "Current file: %@",
                                         "Current file progress detail"),
                               {*status.fileName});
  }
  lines +=
      '\n' +
      formatText(localized("progress_files_format", "%d of %d file(s)", "Processed files progress"),
                 {static_cast<long long>(status.completedFiles), static_cast<long long>(status.totalFiles)});
  return lines;
}

std::string restoringMessage(int messagesCount) {
  if (messagesCount < 1) {
    return localized(
        "restoring_icloud_message_waiting",
        "Waiting for iCloud to send your existing messages to this device. This can take a moment the first "
        "time.",
        "Restoring waiting message");
  }
  return formatText(localized("restoring_icloud_message_progress",
                              "Waiting for iCloud to finish syncing your data… %d message(s) so far.",
                              "Restoring progress message"),
                    {static_cast<long long>(messagesCount)});
}

double importFraction(const ImportStatus::Importing& status) {
  constexpr double steps = allImportProgressSteps.size();
  double fraction = static_cast<double>(status.step) / steps;
  if (status.totalFiles >= 1) {
    fraction += static_cast<double>(status.completedFiles) / static_cast<double>(status.totalFiles) / steps;
  }
  // The bar must not look finished before the success status takes its place.
  return std::min(fraction, 0.98);
}

template <typename Step>
double stepFraction(Step step) {
  return (static_cast<double>(step) + 1) * 0.25;
}

}  // namespace

std::string message(ImportProgressStep step) {
  return texts(step).message.localizedText();
}
std::string message(DatabaseLoadStep step) {
  return texts(step).message.localizedText();
}
std::string message(DeleteProgressStep step) {
  return texts(step).message.localizedText();
}
std::string detailTitle(ImportProgressStep step) {
  return texts(step).detail.localizedText();
}
std::string detailTitle(DatabaseLoadStep step) {
  return texts(step).detail.localizedText();
}
std::string detailTitle(DeleteProgressStep step) {
  return texts(step).detail.localizedText();
}

std::string ImportStatus::title() const {
  return caseAppearances[value_.index()].title.localizedText();
}

std::string ImportStatus::message() const {
  return std::visit(
      Overloaded{
          [](const Importing& status) { return importMessage(status); },
          [](const LoadingDatabase& status) { return tidewrack::message(status.step); },
          [](const RestoringFromiCloud& status) { return restoringMessage(status.messagesCount); },
          [](const Success& status) {
            return formatText(localized("import_success_message",
                                        "Imported %d message(s) from %d library(ies)", "Success message"),
                              {static_cast<long long>(status.messagesCount),
                               static_cast<long long>(status.librariesCount)});
          },
          [](const RestoreSuccess& status) {
            return formatText(localized("restore_success_message", "Restored %d message(s) from iCloud.",
                                        "Restore success message"),
                              {static_cast<long long>(status.messagesCount)});
          },
          [](const Indexed& status) {
            return formatText(
                localized("indexed_message", "%d message(s) have been indexed for Spotlight search",
                          "Indexed message"),
                {static_cast<long long>(status.messagesCount)});
          },
          [](const Deleting& status) {
            return formatText(localized("delete_progress_message", "%@\n%d message(s) affected\n%@",
                                        "Delete progress message"),
                              {status.libraryName, static_cast<long long>(status.messagesCount),
                               tidewrack::message(status.step)});
          },
          [](const DeleteSuccess& status) {
            return formatText(localized("delete_success_message", "Deleted \"%@\" and removed %d message(s).",
                                        "Delete success message"),
                              {status.libraryName, static_cast<long long>(status.messagesCount)});
          },
          [](const Error& status) { return status.message; },
      },
      value_);
}

std::optional<double> ImportStatus::progressFraction() const {
  using Fraction = std::optional<double>;
  return std::visit(Overloaded{
                        [](const Importing& status) -> Fraction { return importFraction(status); },
                        [](const LoadingDatabase& status) -> Fraction { return stepFraction(status.step); },
                        [](const Deleting& status) -> Fraction { return stepFraction(status.step); },
                        [](const auto&) -> Fraction { return std::nullopt; },
                    },
                    value_);
}

std::vector<StatusDetail> ImportStatus::detailItems() const {
  using Rows = std::vector<StatusDetail>;
  return std::visit(
      Overloaded{
          [](const Importing& status) -> Rows { return importRows(status); },
          [](const LoadingDatabase& status) -> Rows { return stepRows(allDatabaseLoadSteps, status.step); },
          [](const Deleting& status) -> Rows { return stepRows(allDeleteProgressSteps, status.step); },
          [](const Success&) -> Rows {
            return completedRows({{"import_detail_1", "Messages are now searchable", "Import detail"},
                                  {"import_detail_2", "Libraries have been saved", "Import detail"},
                                  {"import_detail_3", "Search index updated", "Import detail"}});
          },
          [](const Indexed&) -> Rows {
            return completedRows(
                {{"indexed_detail_1", "Available in Spotlight (Command-Space)", "Indexed detail"},
                 {"indexed_detail_2", "Search by subject, sender, or content", "Indexed detail"}});
          },
          [](const DeleteSuccess&) -> Rows {
            return completedRows({{"delete_detail_1", "Library file removed", "Delete detail"},
                                  {"delete_detail_2", "Imported messages removed", "Delete detail"},
                                  {"delete_detail_3", "Search index rebuilt", "Delete detail"}});
          },
          [](const auto&) -> Rows { return {}; },
      },
      value_);
}

std::string_view ImportStatus::icon() const {
  return caseAppearances[value_.index()].icon;
}

std::string_view ImportStatus::color() const {
  return caseAppearances[value_.index()].color;
}

bool ImportStatus::isRunning() const {
  return std::visit(Overloaded{
                        [](const Importing&) { return true; },
                        [](const LoadingDatabase&) { return true; },
                        [](const RestoringFromiCloud&) { return true; },
                        [](const Deleting&) { return true; },
                        [](const auto&) { return false; },
                    },
                    value_);
}

std::string statusDismissTitle() {
  return localized("ok_button", "OK", "Default dismiss button");
}

std::string_view icon(StatusDetailState state) {
  switch (state) {
    case StatusDetailState::pending:
      return "circle";
    case StatusDetailState::active:
      return "circle.dotted";
    case StatusDetailState::completed:
      break;
  }
  return "checkmark.circle.fill";
}

std::string_view color(StatusDetailState state) {
  switch (state) {
    case StatusDetailState::pending:
      return "secondary";
    case StatusDetailState::active:
      return "blue";
    case StatusDetailState::completed:
      break;
  }
  return "green";
}

}  // namespace tidewrack
