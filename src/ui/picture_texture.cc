#include "ui/picture_texture.h"

#include <map>

namespace tidewrack::ui {
namespace {

Glib::RefPtr<Gdk::Texture> makeTexture(const Picture& picture) {
  GBytes* bytes = g_bytes_new(picture.pixels.data(), picture.pixels.size());
  GdkTexture* texture = gdk_memory_texture_new(picture.width, picture.height, GDK_MEMORY_R8G8B8A8, bytes,
                                               4 * static_cast<gsize>(picture.width));
  g_bytes_unref(bytes);
  return Glib::wrap(texture);
}

}  // namespace

Glib::RefPtr<Gdk::Texture> textureOf(const std::shared_ptr<const Picture>& picture) {
  if (!picture) {
    return {};
  }
  using Key = std::weak_ptr<const Picture>;
  static std::map<Key, Glib::RefPtr<Gdk::Texture>, std::owner_less<Key>> known;
  if (const auto found = known.find(picture); found != known.end()) {
    return found->second;
  }
  std::erase_if(known, [](const auto& entry) { return entry.first.expired(); });
  return known.emplace(picture, makeTexture(*picture)).first->second;
}

}  // namespace tidewrack::ui
