#include "ui/main_window.h"

#include <utility>

#include "platform/localized.h"
#include "reading/display_text.h"
#include "reading/gravatar_service.h"
#include "ui/advanced_search_sheet.h"
#include "ui/alerts.h"
#include "ui/deletion_sheet.h"
#include "ui/discovered_libraries_sheet.h"
#include "ui/main_menu.h"
#include "ui/manage_libraries_sheet.h"
#include "ui/settings_sheet.h"
#include "ui/status_sheet.h"
#include "ui/toast_view.h"
#include "ui/toolbar_view.h"
#include "ui/welcome_view.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int sidebarWidth = 240;
constexpr int sidebarMinimumWidth = 210;
constexpr int listWidth = 380;
constexpr int listMinimumWidth = 320;
constexpr int detailMinimumWidth = 400;
constexpr const char* listPage = "list";
constexpr const char* welcomePage = "welcome";

// All items of the toolbar.
const std::set<ToolbarAction> offeredActions = {
    ToolbarAction::manageLibraries,     ToolbarAction::advancedSearch, ToolbarAction::exportMessages,
    ToolbarAction::importArchives,      ToolbarAction::clearFilters,   ToolbarAction::cloudStatus,
    ToolbarAction::discoveredLibraries, ToolbarAction::settings};

// The bar at the head of a column. Only the outermost columns carry the window's buttons.
AdwHeaderBar* makeHeaderBar(bool hasStartButtons, bool hasEndButtons) {
  auto* bar = ADW_HEADER_BAR(adw_header_bar_new());
  adw_header_bar_set_show_start_title_buttons(bar, hasStartButtons);
  adw_header_bar_set_show_end_title_buttons(bar, hasEndButtons);
  return bar;
}

AdwWindowTitle* giveTitle(AdwHeaderBar* bar, const std::string& title) {
  auto* widget = ADW_WINDOW_TITLE(adw_window_title_new(title.c_str(), nullptr));
  adw_header_bar_set_title_widget(bar, GTK_WIDGET(widget));
  return widget;
}

Gtk::Box* makeColumn(AdwHeaderBar* bar, Gtk::Widget& content, int minimumWidth, const char* styleClass) {
  auto* column = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
  column->append(*wrapWidget(GTK_WIDGET(bar)));
  column->append(content);
  column->set_size_request(minimumWidth, -1);
  column->add_css_class(styleClass);
  return column;
}

// `start` keeps its width while the window changes its own.
Gtk::Paned* makePaned(Gtk::Widget& start, Gtk::Widget& end, int position) {
  auto* paned = Gtk::make_managed<Gtk::Paned>(Gtk::Orientation::HORIZONTAL);
  paned->set_start_child(start);
  paned->set_end_child(end);
  paned->set_resize_start_child(false);
  paned->set_shrink_start_child(false);
  paned->set_shrink_end_child(false);
  paned->set_position(position);
  return paned;
}

}  // namespace

MainWindow::MainWindow(Gtk::Application& application, ContentView& screen, IntelligenceService& intelligence)
    : screen_(screen) {
  GtkWidget* window = adw_application_window_new(application.gobj());
  window_ = dynamic_cast<Gtk::ApplicationWindow*>(Glib::wrap(window));
  window_->set_default_size(defaultWidth, defaultHeight);
  window_->set_icon_name(application.get_id());
  setIdentifier(*window_, "main.window");

  columns_ = makeColumns(intelligence);
  columns_->set_size_request(minimumWidth, minimumHeight);
  root_ = Gtk::make_managed<Gtk::Overlay>();
  root_->set_child(*columns_);
  toast_ = Gtk::make_managed<ToastView>(screen_);
  root_->add_overlay(*toast_);
  addSheets(intelligence);
  adw_application_window_set_content(ADW_APPLICATION_WINDOW(window), GTK_WIDGET(root_->gobj()));

  GravatarService::shared().follow(screen_.services().settings);
  picker_ = std::make_unique<ArchivePicker>(*window_, screen_);
  renameDialog_ = std::make_unique<RenameDialog>(*window_, screen_);
  addActions();
  acceptDrops();
  const auto follow = [this](auto& field, void (MainWindow::*refresh)()) {
    subscriptions_.push_back(field.observe([this, refresh] { (this->*refresh)(); }));
  };
  follow(screen_.cachedFilteredMessages, &MainWindow::showTitle);
  follow(screen_.sidebarSelection, &MainWindow::showTitle);
  follow(screen_.libraries, &MainWindow::showMiddle);
  follow(screen_.messages, &MainWindow::showMiddle);
  follow(screen_.isImporting, &MainWindow::showMiddle);
  follow(screen_.importErrorMessage, &MainWindow::showImportError);
  showMiddle();
  showImportError();
}

MainWindow::~MainWindow() {
  subscriptions_.clear();
  picker_.reset();
  renameDialog_.reset();
  gtk_window_destroy(GTK_WINDOW(window_->gobj()));
}

void MainWindow::present() {
  window_->present();
  list_->listView().grab_focus();
}

Gtk::Widget* MainWindow::makeColumns(IntelligenceService& intelligence) {
  auto* inner = makePaned(*makeListColumn(), *makeDetailColumn(intelligence), listWidth);
  return makePaned(*makeSidebarColumn(), *inner, sidebarWidth);
}

Gtk::Widget* MainWindow::makeSidebarColumn() {
  AdwHeaderBar* bar = makeHeaderBar(true, false);
  giveTitle(bar, localized("Mailboxes_title", "Mailboxes", "Sidebar title"));
  adw_header_bar_pack_end(bar, GTK_WIDGET(makeMainMenuButton()->gobj()));
  return makeColumn(bar, *Gtk::make_managed<SidebarView>(screen_), sidebarMinimumWidth, "sidebar-column");
}

Gtk::Widget* MainWindow::makeListColumn() {
  AdwHeaderBar* bar = makeHeaderBar(false, false);
  listTitle_ = giveTitle(bar, localized("Messages_title", "Messages", "Messages list title"));
  gtk_widget_set_name(GTK_WIDGET(listTitle_), "messages.title");
  list_ = Gtk::make_managed<MessageListView>(screen_);
  WelcomeView::Actions actions;
  actions.onImport = [this] { screen_.isPresentingImporter.set(true); };
  actions.onShowDiscovered = [this] { screen_.isShowingDiscoveredLibraries.set(true); };
  middle_ = Gtk::make_managed<Gtk::Stack>();
  middle_->set_vexpand(true);
  middle_->set_hhomogeneous(false);
  middle_->set_vhomogeneous(false);
  middle_->add(*list_, listPage);
  middle_->add(*Gtk::make_managed<WelcomeView>(screen_, std::move(actions)), welcomePage);
  return makeColumn(bar, *middle_, listMinimumWidth, "list-column");
}

Gtk::Widget* MainWindow::makeDetailColumn(IntelligenceService& intelligence) {
  AdwHeaderBar* bar = makeHeaderBar(false, true);
  giveTitle(bar, localized("detail_title", "Detail", "Message detail title"));
  adw_header_bar_pack_start(bar, GTK_WIDGET(Gtk::make_managed<ToolbarView>(screen_, offeredActions)->gobj()));
  detail_ = Gtk::make_managed<MessageDetailView>(screen_, intelligence);
  return makeColumn(bar, *detail_, detailMinimumWidth, "detail-column");
}

// All but the one that tells how the first load stands are made when they are first shown: together they cost
// more than the rest of the window.
void MainWindow::addSheets(IntelligenceService& intelligence) {
  addSheet(*Gtk::make_managed<StatusSheet>(screen_, *columns_));
  addSheetWhen(screen_.isShowingAdvancedSearch,
               [this] { addSheet(*Gtk::make_managed<AdvancedSearchSheet>(screen_, *columns_)); });
  addSheetWhen(screen_.isShowingSettings, [this, &intelligence] {
    addSheet(*Gtk::make_managed<SettingsSheet>(screen_, intelligence, *columns_));
  });
  addSheetWhen(screen_.isShowingManageLibrariesSheet,
               [this] { addSheet(*Gtk::make_managed<ManageLibrariesSheet>(screen_, *columns_)); });
  addSheetWhen(screen_.isShowingExport, [this] { exportSheet(); });
  addSheetWhen(screen_.isShowingDiscoveredLibraries, [this] {
    addSheet(*Gtk::make_managed<DiscoveredLibrariesSheet>(screen_, *columns_, nullptr));
  });
  addSheetWhen(screen_.showDeleteConfirmation,
               [this] { addSheet(*Gtk::make_managed<DeletionSheet>(screen_, *columns_)); });
}

void MainWindow::addSheet(Gtk::Widget& sheet) {
  root_->add_overlay(sheet);
  toast_->insert_at_end(*root_);  // It stays above all of them.
}

// The sheet follows the field by itself once it is there, so it is told once more what it has missed.
template <typename Make>
void MainWindow::addSheetWhen(Observable<bool>& wanted, Make make) {
  subscriptions_.push_back(wanted.observe([&wanted, make, isMade = false]() mutable {
    if (wanted() && !isMade) {
      isMade = true;
      make();
      wanted.notify();
    }
  }));
}

ExportSheet& MainWindow::exportSheet() {
  if (exportSheet_ == nullptr) {
    exportSheet_ = Gtk::make_managed<ExportSheet>(screen_, *columns_);
    addSheet(*exportSheet_);
  }
  return *exportSheet_;
}

void MainWindow::addActions() {
  window_->add_action("import", [this] { perform(ToolbarAction::importArchives, screen_); });
  window_->add_action("search", [this] { list_->focusSearch(); });
  window_->add_action("advanced-search", [this] { perform(ToolbarAction::advancedSearch, screen_); });
  window_->add_action("zoom-in", [this] { detail_->zoomIn(); });
  window_->add_action("zoom-out", [this] { detail_->zoomOut(); });
  window_->add_action("zoom-reset", [this] { detail_->resetZoom(); });
}

void MainWindow::acceptDrops() {
  auto target = Gtk::DropTarget::create(GDK_TYPE_FILE_LIST, Gdk::DragAction::COPY);
  target->signal_drop().connect(
      [this](const Glib::ValueBase& value, double, double) {
        std::vector<Glib::RefPtr<Gio::File>> files;
        auto* list = static_cast<GdkFileList*>(g_value_get_boxed(value.gobj()));
        GSList* first = gdk_file_list_get_files(list);
        for (GSList* node = first; node != nullptr; node = node->next) {
          files.push_back(Glib::wrap(G_FILE(node->data), true));
        }
        g_slist_free(first);
        openFiles(files, screen_);
        return !files.empty();
      },
      false);
  root_->add_controller(target);
}

void MainWindow::showTitle() {
  const std::string title = shortenedLine(screen_.activeTitle());
  if (window_->get_title().raw() != title) {
    window_->set_title(title);
  }
  const bool isWelcome = screen_.showsWelcome();
  adw_window_title_set_title(
      listTitle_,
      isWelcome ? localized("Messages_title", "Messages", "Messages list title").c_str() : title.c_str());
  adw_window_title_set_subtitle(listTitle_, isWelcome ? "" : screen_.subtitle().c_str());
}

void MainWindow::showMiddle() {
  showTitle();
  middle_->set_visible_child(screen_.showsWelcome() ? welcomePage : listPage);
}

void MainWindow::showImportError() {
  // One at a time: a further failure takes the place of the one before.
  if (const auto close = std::exchange(closeImportError_, nullptr)) {
    close();
  }
  if (const auto& error = screen_.importErrorMessage()) {
    closeImportError_ =
        showAlert(*window_, localized("import_error_title", "Import Error", "Import error alert title"),
                  *error, [this] { screen_.importErrorMessage.set(std::nullopt); });
  }
}

}  // namespace tidewrack::ui
