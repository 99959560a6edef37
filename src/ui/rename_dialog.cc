#include "ui/rename_dialog.h"

#include <cstring>
#include <utility>

#include "platform/localized.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr const char* cancelResponse = "cancel";
constexpr const char* saveResponse = "save";

}  // namespace

RenameDialog::RenameDialog(Gtk::Window& window, ContentView& screen) : window_(window), screen_(screen) {
  subscription_ = screen_.libraryPendingRename.observe([this] { refresh(); });
  refresh();
}

RenameDialog::~RenameDialog() {
  close();
}

void RenameDialog::refresh() {
  if (!screen_.libraryPendingRename()) {
    close();
  } else if (dialog_ == nullptr) {
    present();
  }
}

void RenameDialog::present() {
  dialog_ = ADW_MESSAGE_DIALOG(adw_message_dialog_new(
      window_.gobj(), localized("rename_library", "Rename Library", "Rename library action").c_str(),
      nullptr));
  adw_message_dialog_add_response(dialog_, cancelResponse,
                                  localized("cancel_button", "Cancel", "Cancel button").c_str());
  adw_message_dialog_add_response(dialog_, saveResponse,
                                  localized("save_button", "Save", "Save button").c_str());
  adw_message_dialog_set_response_appearance(dialog_, saveResponse, ADW_RESPONSE_SUGGESTED);
  adw_message_dialog_set_default_response(dialog_, saveResponse);
  adw_message_dialog_set_close_response(dialog_, cancelResponse);
  gtk_widget_set_name(GTK_WIDGET(dialog_), "renameLibrary.dialog");

  auto* entry = Gtk::make_managed<Gtk::Entry>();
  const std::string placeholder =
      localized("library_name_placeholder", "Library name", "Library name placeholder");
  entry->set_placeholder_text(placeholder);
  entry->set_text(screen_.renameDraft());
  entry->set_activates_default(true);
  setIdentifier(*entry, "renameLibrary.name");
  setAccessibleLabel(*entry, placeholder);
  entry->signal_changed().connect([this, entry] { screen_.renameDraft.set(entry->get_text()); });
  adw_message_dialog_set_extra_child(dialog_, GTK_WIDGET(entry->gobj()));

  g_signal_connect(dialog_, "response", G_CALLBACK(responded), this);
  gtk_window_present(GTK_WINDOW(dialog_));
  entry->grab_focus();
}

void RenameDialog::close() {
  if (AdwMessageDialog* dialog = std::exchange(dialog_, nullptr)) {
    g_signal_handlers_disconnect_by_data(dialog, this);
    gtk_window_destroy(GTK_WINDOW(dialog));
  }
}

void RenameDialog::responded(AdwMessageDialog* dialog, const char* response, gpointer self) {
  auto* owner = static_cast<RenameDialog*>(self);
  g_signal_handlers_disconnect_by_data(dialog, self);
  owner->dialog_ = nullptr;  // It closes by itself now.
  if (std::strcmp(response, saveResponse) == 0) {
    owner->screen_.commitRename();
  } else {
    owner->screen_.cancelRename();
  }
}

}  // namespace tidewrack::ui
