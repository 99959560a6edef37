#pragma once

#include <map>
#include <memory>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "screen/export_view.h"
#include "ui/save_panel.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The sheet in which a format is chosen and the list is exported. Its state begins anew each time.
class ExportSheet : public Sheet {
 public:
  ExportSheet(ContentView& screen, Gtk::Widget& covered);
  ~ExportSheet() override;
  ExportSheet(const ExportSheet&) = delete;
  ExportSheet& operator=(const ExportSheet&) = delete;

  /// Replaces the file dialog and the file manager, for tests. From the next time on that the sheet is shown.
  void setDesktop(ExportView::Desktop desktop) { desktop_ = std::move(desktop); }
  /// The state; null while the sheet is not there.
  [[nodiscard]] ExportView* state() { return view_.get(); }

  static constexpr int idealWidth = 480;
  static constexpr int minimumHeight = 500;

 private:
  Gtk::Widget* makeHead();
  Gtk::Widget* makeFormats();
  /// The format below the chosen one, or the one above it.
  void chooseNeighbour(bool isNext);
  Gtk::Widget* makeButtons();
  void followScreen();
  void begin();
  void end();
  void close();
  void refresh();
  void showError();

  ContentView& screen_;
  SavePanel panel_;
  ExportView::Desktop desktop_;
  std::shared_ptr<ExportView> view_;
  Gtk::Button* closeButton_ = nullptr;
  Gtk::Label count_;
  Gtk::Label size_;
  std::map<ExportView::Format, Gtk::CheckButton*> choices_;
  Gtk::Label description_;
  Gtk::ProgressBar progress_;
  Gtk::Button export_;
  Gtk::Stack exportFace_;
  Gtk::Label exportTitle_{"Exportar"};
  Gtk::Spinner spinner_;
  std::vector<Subscription> screenSubscriptions_;
  std::vector<Subscription> subscriptions_;  ///< To the state of this time.
};

}  // namespace tidewrack::ui
