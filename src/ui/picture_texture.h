#pragma once

#include <memory>

#include <gtkmm.h>

#include "platform/picture.h"

namespace tidewrack::ui {

/// What GTK draws of a picture; null for none. One for all views of the picture. Main thread only.
Glib::RefPtr<Gdk::Texture> textureOf(const std::shared_ptr<const Picture>& picture);

}  // namespace tidewrack::ui
