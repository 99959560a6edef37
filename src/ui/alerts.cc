#include "ui/alerts.h"

#include <memory>
#include <utility>

#include <adwaita.h>

#include "platform/localized.h"

namespace tidewrack::ui {
namespace {

// What happens when the alert goes, and the widget without which it must not.
struct Dismissal {
  Dismissal(GtkWidget* widget, std::function<void()> whenGone, std::shared_ptr<GtkWindow*> shown)
      : action(std::move(whenGone)), alert(std::move(shown)) {
    g_weak_ref_init(&anchor, widget);
  }
  ~Dismissal() { g_weak_ref_clear(&anchor); }
  Dismissal(const Dismissal&) = delete;
  Dismissal& operator=(const Dismissal&) = delete;

  GWeakRef anchor{};
  std::function<void()> action;
  std::shared_ptr<GtkWindow*> alert;  // Null in it once the alert has gone, or is about to.
};

void responded(AdwMessageDialog*, const char*, gpointer data) {
  auto* dismissal = static_cast<Dismissal*>(data);
  *dismissal->alert = nullptr;
  if (GObject* anchor = G_OBJECT(g_weak_ref_get(&dismissal->anchor))) {
    std::exchange(dismissal->action, [] {})();
    g_object_unref(anchor);
  }
}

void freeDismissal(gpointer data, GClosure*) {
  *static_cast<Dismissal*>(data)->alert = nullptr;
  delete static_cast<Dismissal*>(data);
}

}  // namespace

std::function<void()> showAlert(Gtk::Widget& anchor, const std::string& title, const std::string& message,
                                std::function<void()> dismissed) {
  GtkRoot* root = gtk_widget_get_root(anchor.gobj());
  GtkWindow* window = GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr;
  auto* dialog = ADW_MESSAGE_DIALOG(adw_message_dialog_new(window, title.c_str(), message.c_str()));
  adw_message_dialog_add_response(dialog, "ok",
                                  localized("ok_button", "OK", "Default dismiss button").c_str());
  adw_message_dialog_set_default_response(dialog, "ok");
  adw_message_dialog_set_close_response(dialog, "ok");
  gtk_widget_set_name(GTK_WIDGET(dialog), "alert");
  auto alert = std::make_shared<GtkWindow*>(GTK_WINDOW(dialog));
  g_signal_connect_data(dialog, "response", G_CALLBACK(responded),
                        new Dismissal(anchor.gobj(), std::move(dismissed), alert), &freeDismissal,
                        static_cast<GConnectFlags>(0));
  gtk_window_present(GTK_WINDOW(dialog));
  return [alert] {
    if (GtkWindow* shown = std::exchange(*alert, nullptr)) {
      gtk_window_destroy(shown);
    }
  };
}

}  // namespace tidewrack::ui
