#include "ui/status_sheet.h"

namespace tidewrack::ui {

StatusSheet::StatusSheet(ContentView& screen, Gtk::Widget& covered)
    : Sheet(covered),
      screen_(screen),
      panel_(Gtk::make_managed<ImportStatusView>(false, [this] { screen_.dismissImportStatus(); })) {
  setContent(*panel_, width);
  setCloseRequest([this] {
    const auto& status = screen_.importStatus();
    if (!status || status->showsDismissButton()) {
      screen_.dismissImportStatus();
    }
  });
  subscriptions_.push_back(screen_.importStatus.observe([this] { refresh(); }));
  subscriptions_.push_back(screen_.showImportStatusSheet.observe([this] { refresh(); }));
  refresh();
}

StatusSheet::~StatusSheet() {
  patience_.disconnect();
}

void StatusSheet::refresh() {
  const auto& status = screen_.importStatus();
  // A deletion tells how it stands where it was asked for.
  const bool isWanted =
      screen_.showImportStatusSheet() && status.has_value() && !screen_.showDeleteConfirmation();
  if (!isWanted) {
    patience_.disconnect();
    dismiss();
    return;
  }
  panel_->show(*status);
  const bool isLoad = status->as<ImportStatus::LoadingDatabase>() != nullptr;
  if (!isLoad) {
    patience_.disconnect();
    present();
  } else if (!isPresented() && !patience_.connected()) {
    patience_ = Glib::signal_timeout().connect(
        [this] {
          present();
          return false;
        },
        loadPatienceMilliseconds);
  }
  panel_->focusDismissButton();
}

}  // namespace tidewrack::ui
