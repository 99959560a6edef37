#include "ui/window_picture.h"

namespace tidewrack::ui {

bool writePicture(Gtk::Window& window, const std::string& file) {
  auto* widget = GTK_WIDGET(window.gobj());
  GskRenderer* renderer = gtk_native_get_renderer(GTK_NATIVE(widget));
  const int width = gtk_widget_get_width(widget);
  const int height = gtk_widget_get_height(widget);
  if (renderer == nullptr || width == 0 || height == 0) {
    return false;
  }
  GdkPaintable* paintable = gtk_widget_paintable_new(widget);
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(paintable, snapshot, width, height);
  GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
  g_object_unref(paintable);
  if (node == nullptr) {
    return false;
  }
  const graphene_rect_t viewport = {{0, 0}, {static_cast<float>(width), static_cast<float>(height)}};
  GdkTexture* texture = gsk_renderer_render_texture(renderer, node, &viewport);
  gsk_render_node_unref(node);
  const bool saved = gdk_texture_save_to_png(texture, file.c_str()) != FALSE;
  g_object_unref(texture);
  return saved;
}

}  // namespace tidewrack::ui
