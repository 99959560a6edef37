#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <adwaita.h>
#include <gtkmm.h>

#include "intelligence/intelligence_service.h"
#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/archive_picker.h"
#include "ui/export_sheet.h"
#include "ui/message_detail_view.h"
#include "ui/message_list_view.h"
#include "ui/rename_dialog.h"
#include "ui/sidebar_view.h"

namespace tidewrack::ui {

/// The main window: sidebar, message list and detail side by side, the sheets and the toast over them. It
/// joins the views to the screen and to the named actions "win.*"; what they show is theirs.
/// Made and used on the main thread; the widgets live as long as this object.
class MainWindow {
 public:
  /// All three must outlive the window.
  MainWindow(Gtk::Application& application, ContentView& screen, IntelligenceService& intelligence);
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  void present();

  [[nodiscard]] Gtk::ApplicationWindow& window() { return *window_; }
  [[nodiscard]] MessageListView& list() { return *list_; }
  [[nodiscard]] MessageDetailView& detail() { return *detail_; }
  /// Made now where nobody has asked for it yet.
  ExportSheet& exportSheet();

  static constexpr int minimumWidth = 980;
  static constexpr int minimumHeight = 620;
  static constexpr int defaultWidth = 1200;
  static constexpr int defaultHeight = 750;

 private:
  Gtk::Widget* makeColumns(IntelligenceService& intelligence);
  Gtk::Widget* makeSidebarColumn();
  Gtk::Widget* makeListColumn();
  Gtk::Widget* makeDetailColumn(IntelligenceService& intelligence);
  void addSheets(IntelligenceService& intelligence);
  void addSheet(Gtk::Widget& sheet);
  template <typename Make>
  void addSheetWhen(Observable<bool>& wanted, Make make);
  void addActions();
  void acceptDrops();
  void showTitle();
  void showMiddle();
  void showImportError();

  ContentView& screen_;
  Gtk::ApplicationWindow* window_ = nullptr;
  Gtk::Overlay* root_ = nullptr;
  Gtk::Widget* columns_ = nullptr;
  Gtk::Widget* toast_ = nullptr;
  AdwWindowTitle* listTitle_ = nullptr;
  Gtk::Stack* middle_ = nullptr;
  MessageListView* list_ = nullptr;
  MessageDetailView* detail_ = nullptr;
  ExportSheet* exportSheet_ = nullptr;      ///< Null until it is wanted.
  std::function<void()> closeImportError_;  ///< Null while there is no alert.
  std::unique_ptr<ArchivePicker> picker_;
  std::unique_ptr<RenameDialog> renameDialog_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
