// The program is there once: a second launch brings the window of the first to the front.

#include <string>

#include "ui/application.h"
#include "ui/keyboard.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

// A launch of the program beside the one in this process.
class Launch {
 public:
  Launch() {
    const std::string program = std::string(TIDEWRACK_BINARY_DIR) + "/tidewrack";
    process_ = g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, program.c_str(), nullptr);
    if (process_ == nullptr) {
      return;
    }
    g_subprocess_wait_async(
        process_, nullptr,
        [](GObject* process, GAsyncResult* result, gpointer self) {
          g_subprocess_wait_finish(G_SUBPROCESS(process), result, nullptr);
          static_cast<Launch*>(self)->hasEnded_ = true;
        },
        this);
  }
  ~Launch() { g_clear_object(&process_); }
  Launch(const Launch&) = delete;
  Launch& operator=(const Launch&) = delete;

  /// Its exit status; -1 when it could not be started, was killed or went on and on.
  int statusAtTheEnd() {
    const bool ends = process_ != nullptr && runUntil([this] { return hasEnded_; });
    return ends && g_subprocess_get_if_exited(process_) != FALSE ? g_subprocess_get_exit_status(process_)
                                                                 : -1;
  }

 private:
  GSubprocess* process_ = nullptr;
  bool hasEnded_ = false;
};

class SingleInstanceTest : public WindowTest {
 protected:
  // The first launch, in this process.
  void launch() {
    application_ = ui::Application::create({.start = [this]() -> ContentView& { return startScreen(); },
                                            .intelligence = *service_,
                                            .help = {},
                                            .pictureFile = {}});
    ASSERT_TRUE(application_->register_application());
    ASSERT_FALSE(application_->is_remote());
    application_->activate();
    ASSERT_TRUE(runUntil([this] { return !screen_->isImporting(); }));
    letFlowsEnd();
  }
  ~SingleInstanceTest() override {
    letFlowsEnd();
    if (application_) {
      application_->activate_action("quit");
    }
    runPending();
  }
  GtkWindow* mainWindow() { return GTK_WINDOW(application_->mainWindow()->window().gobj()); }

  Glib::RefPtr<ui::Application> application_;
};

TEST_F(SingleInstanceTest, ASecondLaunchRaisesTheWindowOfTheFirst) {
  launch();
  Keyboard::focus(mainWindow());
  Gtk::Window inFront;
  inFront.present();
  Keyboard::focus(inFront.gobj());
  ASSERT_FALSE(gtk_window_is_active(mainWindow()));
  Launch second;
  ASSERT_EQ(second.statusAtTheEnd(), 0);
  EXPECT_TRUE(runUntil([this] { return gtk_window_is_active(mainWindow()) != FALSE; }, 10));
  EXPECT_FALSE(inFront.property_is_active().get_value());
}

}  // namespace
}  // namespace tidewrack
