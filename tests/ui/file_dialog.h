#pragma once

#include <gtkmm.h>

namespace tidewrack {

/// The desktop's file dialog of this process, where there is no portal; or null.
inline GtkWidget* fileDialog() {
  GListModel* windows = gtk_window_get_toplevels();
  for (guint index = 0; index < g_list_model_get_n_items(windows); ++index) {
    auto* window = static_cast<GtkWidget*>(g_list_model_get_item(windows, index));
    g_object_unref(window);  // GTK keeps its windows.
    if (GTK_IS_FILE_CHOOSER_DIALOG(window) && gtk_widget_get_visible(window) != FALSE) {
      return window;
    }
  }
  return nullptr;
}

}  // namespace tidewrack
