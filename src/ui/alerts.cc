#include "ui/alerts.h"

#include <utility>

#include <adwaita.h>

#include "platform/localized.h"

namespace tidewrack::ui {
namespace {

// What happens when the alert goes, and the widget without which it must not.
struct Dismissal {
  Dismissal(GtkWidget* widget, std::function<void()> whenGone) : action(std::move(whenGone)) {
    g_weak_ref_init(&anchor, widget);
  }
  ~Dismissal() { g_weak_ref_clear(&anchor); }
  Dismissal(const Dismissal&) = delete;
  Dismissal& operator=(const Dismissal&) = delete;

  GWeakRef anchor{};
  std::function<void()> action;
};

void responded(AdwMessageDialog*, const char*, gpointer data) {
  auto* dismissal = static_cast<Dismissal*>(data);
  if (GObject* anchor = G_OBJECT(g_weak_ref_get(&dismissal->anchor))) {
    std::exchange(dismissal->action, [] {})();
    g_object_unref(anchor);
  }
}

void freeDismissal(gpointer data, GClosure*) {
  delete static_cast<Dismissal*>(data);
}

}  // namespace

void showAlert(Gtk::Widget& anchor, const std::string& title, const std::string& message,
               std::function<void()> dismissed) {
  GtkRoot* root = gtk_widget_get_root(anchor.gobj());
  GtkWindow* window = GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr;
  auto* dialog = ADW_MESSAGE_DIALOG(adw_message_dialog_new(window, title.c_str(), message.c_str()));
  adw_message_dialog_add_response(dialog, "ok",
                                  localized("ok_button", "OK", "Default dismiss button").c_str());
  adw_message_dialog_set_default_response(dialog, "ok");
  adw_message_dialog_set_close_response(dialog, "ok");
  gtk_widget_set_name(GTK_WIDGET(dialog), "alert");
  g_signal_connect_data(dialog, "response", G_CALLBACK(responded),
                        new Dismissal(anchor.gobj(), std::move(dismissed)), &freeDismissal,
                        static_cast<GConnectFlags>(0));
  gtk_window_present(GTK_WINDOW(dialog));
}

}  // namespace tidewrack::ui
