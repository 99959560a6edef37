#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "export/export_utility.h"
#include "platform/executor.h"
#include "platform/observable.h"
#include "platform/task.h"
#include "screen/shared_message_list.h"

namespace tidewrack {

class ContentView;

/// The export sheet's state, for as long as the sheet is there, and its one flow: choose a format, ask for a
/// file, write it in the background, show it in the file manager. Its texts are Spanish whatever the language
/// of the program. It knows no toolkit. Main thread only.
class ExportView : public std::enable_shared_from_this<ExportView> {
 public:
  using Format = ExportUtility::ExportFormat;

  /// What the file dialog is asked for.
  struct SavePanel {
    std::string fileName;  ///< Suggested, for example "mensajes_export.html".
    Format format{};       ///< The one allowed type.
    /// To be called once, with the chosen file or with none.
    std::function<void(std::optional<std::filesystem::path>)> completion;
  };
  /// What the desktop does for the flow.
  struct Desktop {
    std::function<void(SavePanel)> beginSavePanel;  ///< Returns at once.
    std::function<void(const std::filesystem::path&)> revealFile;
  };

  /// Exports what the screen's list shows; the screen outlives the view.
  static std::shared_ptr<ExportView> create(ContentView& screen, Desktop desktop);

  Observable<Format> selectedFormat{Format::html};
  Observable<bool> isExporting{false};
  Observable<std::optional<std::string>> exportError;  ///< Text of the alert; present = shown.
  Observable<double> progress{0.0};                    ///< Part of the messages that is written, 0 to 1.
  /// Approximate size in bytes, the same for all formats; absent until it has been counted.
  Observable<std::optional<std::uint64_t>> approximateSize;

  [[nodiscard]] const SharedMessageList& messages() const;
  [[nodiscard]] bool canExport() const { return !isExporting() && !messages().empty(); }
  /// "12 mensajes seleccionados"
  [[nodiscard]] std::string countText() const;
  /// "Tamaño aproximado: 3.4 MB"; empty until the size is known.
  [[nodiscard]] std::string sizeText() const;
  /// What the format is good for, shown under the list of formats.
  static const char* formatDescription(Format format);

  /// Counts the size of the present list, in the background. Runs that overlap are sorted out.
  Task<> refreshSize();

  /// The export button. Asks for a file and, once there is one, writes it.
  void beginExport();
  /// Closes the sheet. An export that is under way is given up and leaves nothing.
  void close();
  /// Gives up an export that is under way, when the sheet is gone.
  void giveUp();
  void dismissError() { exportError.set(std::nullopt); }

 private:
  ExportView(ContentView& screen, Desktop desktop);
  Task<> save(std::filesystem::path file);
  void report(std::size_t done, std::size_t total);

  ContentView& screen_;
  Desktop desktop_;
  bool isChoosingFile_ = false;
  /// Set when the run that is under way is to be given up.
  std::shared_ptr<std::atomic<bool>> isCancelled_;
};

/// The file that is meant by a name without an extension: the same with that of the format.
std::filesystem::path withExportExtension(const std::filesystem::path& file,
                                          ExportUtility::ExportFormat format);

}  // namespace tidewrack
