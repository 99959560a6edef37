// What window_bench measures: the program's own start, from its main function on. It prints when the window
// has been painted, the store is loaded and nothing is left to do (CLOCK_MONOTONIC, in microseconds), and
// ends.

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <gtkmm.h>
#include <unistd.h>

#include "app/tidewrack_app.h"
#include "ui/application.h"

namespace {

using namespace tidewrack;

void reportWhenIdle(ContentView& screen) {
  Glib::signal_idle().connect(
      [&screen] {
        if (screen.isImporting() || !screen.hasLoadedPersistedLibraries()) {
          g_usleep(200);
          return true;
        }
        std::printf("ready %lld\n", static_cast<long long>(g_get_monotonic_time()));
        std::fflush(stdout);
        _exit(EXIT_SUCCESS);
      },
      Glib::PRIORITY_LOW);
}

void watch(Gtk::Window& window, ContentView& screen) {
  const auto follow = [&window, &screen] {
    auto* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window.gobj()));
    g_signal_connect(clock, "after-paint", G_CALLBACK(+[](GdkFrameClock* painted, gpointer data) {
                       g_signal_handlers_disconnect_matched(painted, G_SIGNAL_MATCH_DATA, 0, 0, nullptr,
                                                            nullptr, data);
                       reportWhenIdle(*static_cast<ContentView*>(data));
                     }),
                     &screen);
  };
  if (window.get_realized()) {
    follow();
  } else {
    window.signal_realize().connect(follow);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  TidewrackApp app({argv, argv + argc});
  ContentView* screen = nullptr;
  const auto application = ui::Application::create({.start = [&]() -> ContentView& {
                                                      screen = &app.start();
                                                      return *screen;
                                                    },
                                                    .intelligence = app.intelligence(),
                                                    .help = {},
                                                    .pictureFile = {}});
  application->signal_activate().connect([&] {
    auto& window = application->mainWindow()->window();
    watch(window, *screen);
  });
  return application->run(argc, argv);
}
