#include "platform/picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace tidewrack {
namespace {

constexpr int largestSide = 4096;  // pixels

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

/// A picture that claims to be huge is scaled away before any memory is taken for it.
void refuseHuge(GdkPixbufLoader* loader, int width, int height, gpointer refused) {
  if (width > largestSide || height > largestSide) {
    *static_cast<bool*>(refused) = true;
    gdk_pixbuf_loader_set_size(loader, 1, 1);
  }
}

}  // namespace

std::shared_ptr<const Picture> decodePicture(std::string_view bytes) {
  const std::unique_ptr<GdkPixbufLoader, Unref> loader(gdk_pixbuf_loader_new());
  bool refused = false;
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseHuge), &refused);
  const bool written = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(bytes.data()),
                                               bytes.size(), nullptr) != FALSE;
  const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
  GdkPixbuf* decoded = written && closed && !refused ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
  if (decoded == nullptr) {
    return nullptr;
  }
  const std::unique_ptr<GdkPixbuf, Unref> opaque(gdk_pixbuf_add_alpha(decoded, FALSE, 0, 0, 0));
  if (!opaque) {
    return nullptr;
  }
  auto picture = std::make_shared<Picture>();
  picture->width = gdk_pixbuf_get_width(opaque.get());
  picture->height = gdk_pixbuf_get_height(opaque.get());
  const auto rowSize = static_cast<std::size_t>(picture->width) * 4;
  const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(opaque.get()));
  const guchar* pixels = gdk_pixbuf_read_pixels(opaque.get());
  picture->pixels.reserve(rowSize * static_cast<std::size_t>(picture->height));
  for (int row = 0; row < picture->height; ++row) {
    const guchar* begin = pixels + static_cast<std::size_t>(row) * stride;
    picture->pixels.insert(picture->pixels.end(), begin, begin + rowSize);
  }
  return picture;
}

}  // namespace tidewrack
