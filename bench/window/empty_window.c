// The reference of window_bench: an empty libadwaita window of the size of the program's. It prints when it
// stands (CLOCK_MONOTONIC, in microseconds) and ends.

#include <adwaita.h>
#include <stdio.h>
#include <unistd.h>

static gboolean is_idle(gpointer data) {
  (void)data;
  printf("ready %lld\n", (long long)g_get_monotonic_time());
  fflush(stdout);
  _exit(0);
}

static void painted(GdkFrameClock* clock, gpointer data) {
  g_signal_handlers_disconnect_by_func(clock, (gpointer)painted, data);
  g_idle_add_full(G_PRIORITY_LOW, is_idle, NULL, NULL);
}

static void realized(GtkWidget* window, gpointer data) {
  (void)data;
  g_signal_connect(gtk_widget_get_frame_clock(window), "after-paint", G_CALLBACK(painted), NULL);
}

static void activate(GtkApplication* application, gpointer data) {
  (void)data;
  GtkWidget* window = adw_application_window_new(application);
  gtk_window_set_default_size(GTK_WINDOW(window), 1200, 750);
  GtkWidget* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(content), adw_header_bar_new());
  adw_application_window_set_content(ADW_APPLICATION_WINDOW(window), content);
  g_signal_connect(window, "realize", G_CALLBACK(realized), NULL);
  gtk_window_present(GTK_WINDOW(window));
}

int main(int argc, char** argv) {
  AdwApplication* application = adw_application_new("io.marloon.Tidewrack.Empty", G_APPLICATION_NON_UNIQUE);
  g_signal_connect(application, "activate", G_CALLBACK(activate), NULL);
  return g_application_run(G_APPLICATION(application), argc, argv);
}
