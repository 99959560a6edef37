#include "ui/window_fixture.h"

#include <chrono>
#include <fstream>

#include <adwaita.h>

#include "app/demo_library.h"
#include "ui/archive_picker.h"
#include "ui/style.h"

namespace tidewrack {

bool runUntil(const std::function<bool()>& isDone, int seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  // Wakes the loop for conditions that no event announces.
  constexpr unsigned wakeUpMilliseconds = 5;
  sigc::connection wakeUp = Glib::signal_timeout().connect([] { return true; }, wakeUpMilliseconds);
  bool done = isDone();
  while (!done && std::chrono::steady_clock::now() < deadline) {
    g_main_context_iteration(nullptr, TRUE);
    done = isDone();
  }
  wakeUp.disconnect();
  return done;
}

void runPending() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

Gtk::Application& testApplication() {
  static const auto application = [] {
    auto created =
        Gtk::Application::create("io.marloon.Tidewrack.Tests", Gio::Application::Flags::NON_UNIQUE);
    adw_init();
    created->register_application();
    g_object_set(gtk_settings_get_default(), "gtk-enable-animations", FALSE, nullptr);
    ui::installStyle();
    return created;
  }();
  return *application;
}

Gtk::Widget* findWidget(GtkWidget* root, const std::string& name) {
  if (gtk_widget_get_child_visible(root) == FALSE || gtk_widget_get_visible(root) == FALSE) {
    return nullptr;
  }
  if (name == gtk_widget_get_name(root)) {
    return Glib::wrap(root);
  }
  for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    if (auto* found = findWidget(child, name)) {
      return found;
    }
  }
  return nullptr;
}

bool pressShortcut(Gtk::Widget& widget, guint key, Gdk::ModifierType modifiers) {
  const auto wanted = Gtk::KeyvalTrigger::create(key, modifiers);
  for (GtkWidget* around = widget.gobj(); around != nullptr; around = gtk_widget_get_parent(around)) {
    GListModel* controllers = gtk_widget_observe_controllers(around);
    for (guint index = 0; index < g_list_model_get_n_items(controllers); ++index) {
      auto* controller = static_cast<GtkEventController*>(g_list_model_get_item(controllers, index));
      const guint count =
          GTK_IS_SHORTCUT_CONTROLLER(controller) ? g_list_model_get_n_items(G_LIST_MODEL(controller)) : 0;
      for (guint place = 0; place < count; ++place) {
        auto* shortcut = static_cast<GtkShortcut*>(g_list_model_get_item(G_LIST_MODEL(controller), place));
        const bool isWanted =
            gtk_shortcut_trigger_equal(gtk_shortcut_get_trigger(shortcut), wanted->gobj()) != FALSE;
        const bool isDone = isWanted && gtk_shortcut_action_activate(
                                            gtk_shortcut_get_action(shortcut), GTK_SHORTCUT_ACTION_EXCLUSIVE,
                                            around, gtk_shortcut_get_arguments(shortcut)) != FALSE;
        g_object_unref(shortcut);
        if (isDone) {
          g_object_unref(controller);
          g_object_unref(controllers);
          return true;
        }
      }
      g_object_unref(controller);
    }
    g_object_unref(controllers);
  }
  return false;
}

std::string archivedMessage(const std::string& headers, const std::string& body) {
  return "From sender@example.org Thu Jan  1 00:00:00 2026\n" + headers + "\n" + body + "\n\n";
}

WindowTest::WindowTest() : settings_((testApplication(), folder_ / "settings.ini")) {}

WindowTest::~WindowTest() {
  close();
}

ContentView& WindowTest::startScreen() {
  executor_ = std::make_unique<MainLoopExecutor>();
  screen_ = std::make_unique<ContentView>(
      ContentViewServices{.executor = *executor_,
                          .settings = settings_,
                          .container = ModelContainer::open(folder_ / "default.store"),
                          .applicationFolder = folder_.path(),
                          .arguments = arguments_,
                          .demoLibrary = demoLibrary});
  return *screen_;
}

void WindowTest::open() {
  startScreen();
  window_ = std::make_unique<ui::MainWindow>(testApplication(), *screen_, *service_);
  window_->present();
  screen_->startup();
  ASSERT_TRUE(runUntil([this] { return !screen_->isImporting(); }));
  letFlowsEnd();  // What they find would take the place of what a test sets.
  runPending();
}

// A flow that is cut off keeps the store open for ever.
void WindowTest::letFlowsEnd() {
  constexpr int longestFlow = 4;  // background jobs that one sets off behind the other
  for (int round = 0; round < longestFlow; ++round) {
    auto left = std::make_shared<int>(2);
    for (const auto priority : {TaskPriority::userInitiated, TaskPriority::utility}) {
      executor_->runInBackground(priority, [this, left] { executor_->post([left] { --*left; }); });
    }
    runUntil([left] { return *left == 0; });
  }
}

void WindowTest::close() {
  if (executor_) {
    letFlowsEnd();
  }
  window_.reset();
  executor_.reset();
  screen_.reset();
  runPending();
}

std::filesystem::path WindowTest::archive(const std::string& name, const std::string& bytes) const {
  const std::filesystem::path file = folder_ / name;
  std::ofstream(file, std::ios::binary) << bytes;
  return file;
}

void WindowTest::import(const std::filesystem::path& file) {
  ui::openFiles({Gio::File::create_for_path(file.string())}, *screen_);
  ASSERT_TRUE(runUntil([this] {
    const auto& status = screen_->importStatus();
    return !screen_->isImporting() && status && status->showsDismissButton();
  }));
  runPending();
}

Gtk::Widget* WindowTest::find(const std::string& name) {
  return findWidget(GTK_WIDGET(window_->window().gobj()), name);
}

void WindowTest::press(const std::string& name) {
  auto* button = find<Gtk::Button>(name);
  ASSERT_NE(button, nullptr) << name;
  ASSERT_TRUE(button->is_sensitive()) << name;
  g_signal_emit_by_name(button->gobj(), "clicked");
  runPending();
}

GtkWindow* WindowTest::alert() {
  GtkWindow* found = nullptr;
  GList* windows = gtk_window_list_toplevels();
  for (GList* node = windows; node != nullptr; node = node->next) {
    if (ADW_IS_MESSAGE_DIALOG(node->data) && gtk_widget_get_visible(GTK_WIDGET(node->data)) != FALSE) {
      found = GTK_WINDOW(node->data);
    }
  }
  g_list_free(windows);
  return found;
}

}  // namespace tidewrack
