#include "screen/export_view.h"

#include <utility>

#include "export/export_file.h"
#include "platform/byte_count.h"
#include "platform/failure.h"
#include "screen/content_view.h"

namespace tidewrack {
namespace {

// Steps of progress that are worth telling.
constexpr std::size_t progressSteps = 200;

// Unwinds an export that nobody wants any more.
struct Cancelled {};

}  // namespace

std::shared_ptr<ExportView> ExportView::create(ContentView& screen, Desktop desktop) {
  return std::shared_ptr<ExportView>(new ExportView(screen, std::move(desktop)));
}

ExportView::ExportView(ContentView& screen, Desktop desktop)
    : screen_(screen), desktop_(std::move(desktop)) {}

const SharedMessageList& ExportView::messages() const {
  return screen_.cachedFilteredMessages();
}

std::string ExportView::countText() const {
  return std::to_string(messages().size()) + " mensajes seleccionados";
}

std::string ExportView::sizeText() const {
  const auto& size = approximateSize();
  return size ? "Tamaño aproximado: " + formatByteCount(*size) : std::string();
}

const char* ExportView::formatDescription(Format format) {
  switch (format) {
    case Format::txt:
      return "Texto plano simple, fácil de leer en cualquier editor";
    case Format::html:
      return "Página web con formato visual, incluye estilos y estructura HTML";
    case Format::json:
      return "Formato estructurado para procesamiento programático o análisis de datos";
    case Format::csv:
      return "Tabla compatible con Excel y hojas de cálculo, solo metadatos";
    case Format::mbox:
      return "Formato estándar de correo, compatible con otros clientes de email";
  }
  return "";
}

Task<> ExportView::refreshSize() {
  const auto self = shared_from_this();
  const SharedMessageList list = messages();
  auto count = [list] { return exportSizeEstimate(list); };
  const std::uint64_t size =
      co_await inBackground(screen_.services().executor, TaskPriority::userInitiated, std::move(count));
  if (list.isSame(messages())) {
    approximateSize.set(size);
  }
}

void ExportView::beginExport() {
  if (isExporting() || isChoosingFile_) {
    return;
  }
  if (messages().empty()) {
    exportError.set(ExportUtility::ExportError(ExportUtility::ExportError::Kind::noMessages).what());
    return;
  }
  isChoosingFile_ = true;
  const std::string name = std::string("mensajes_export.") + ExportUtility::fileExtension(selectedFormat());
  auto chosen = [self = shared_from_this()](std::optional<std::filesystem::path> file) {
    self->isChoosingFile_ = false;
    if (file && self->screen_.isShowingExport()) {
      self->save(std::move(*file));
    }
  };
  desktop_.beginSavePanel({name, selectedFormat(), std::move(chosen)});
}

void ExportView::close() {
  giveUp();
  screen_.isShowingExport.set(false);
}

void ExportView::giveUp() {
  if (isCancelled_) {
    *isCancelled_ = true;
  }
}

void ExportView::report(std::size_t done, std::size_t total) {
  progress.set(static_cast<double>(done) / static_cast<double>(total));
}

Task<> ExportView::save(std::filesystem::path file) {
  const auto self = shared_from_this();
  auto& executor = screen_.services().executor;
  const auto isCancelled = std::make_shared<std::atomic<bool>>(false);
  isCancelled_ = isCancelled;
  progress.set(0.0);
  isExporting.set(true);

  auto write = [list = messages(), format = selectedFormat(), file, isCancelled, &executor,
                weak = weak_from_this()] {
    const std::size_t total = list.size();
    std::size_t told = 0;
    exportToFile(list, format, file, executor.now(), [&](std::size_t done) {
      if (*isCancelled) {
        throw Cancelled();
      }
      if (done * progressSteps / total > told) {
        told = done * progressSteps / total;
        executor.post([weak, done, total] {
          if (const auto view = weak.lock()) {
            view->report(done, total);
          }
        });
      }
    });
  };
  std::optional<std::string> error;
  bool isWritten = false;
  try {
    co_await inBackground(executor, TaskPriority::userInitiated, std::move(write));
    isWritten = true;
  } catch (const Cancelled&) {
    // The sheet is gone.
  } catch (const FileFailure& failure) {
    error = std::string("Error al guardar: ") + failure.what();
  } catch (const std::exception& failure) {
    error = failure.what();
  }
  isCancelled_.reset();
  isExporting.set(false);
  if (*isCancelled) {
    co_return;
  }
  if (isWritten) {
    screen_.isShowingExport.set(false);
    desktop_.revealFile(file);
  } else {
    exportError.set(std::move(error));
  }
}

std::filesystem::path withExportExtension(const std::filesystem::path& file,
                                          ExportUtility::ExportFormat format) {
  if (file.has_extension() || !file.has_filename()) {
    return file;
  }
  return file.string() + "." + ExportUtility::fileExtension(format);
}

}  // namespace tidewrack
