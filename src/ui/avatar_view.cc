#include "ui/avatar_view.h"

#include "reading/avatar.h"
#include "ui/picture_texture.h"
#include "ui/style.h"

namespace tidewrack::ui {

AvatarView::AvatarView(int size, GravatarService& pictures, Settings& settings)
    : avatar_(pictures, settings, [this] { showPicture(); }) {
  set_size_request(size, size);
  set_halign(Gtk::Align::CENTER);
  set_valign(Gtk::Align::CENTER);
  set_hexpand(false);
  set_overflow(Gtk::Overflow::HIDDEN);
  add_css_class("sender-avatar");
  auto attributes = Pango::AttrList();
  auto height =
      Pango::Attribute::create_attr_size_absolute(static_cast<int>(size * avatarTextScale * PANGO_SCALE));
  attributes.insert(height);
  initials_.set_attributes(attributes);
  initials_.set_hexpand(true);
  initials_.add_css_class("sender-initials");
  append(initials_);
  picture_.set_keep_aspect_ratio(false);
  picture_.set_can_shrink(true);
  picture_.set_size_request(size, size);
  picture_.set_hexpand(true);
  picture_.set_visible(false);
  append(picture_);
  gtk_accessible_update_state(GTK_ACCESSIBLE(gobj()), GTK_ACCESSIBLE_STATE_HIDDEN, TRUE, -1);
}

void AvatarView::show(const EmailAddress& address) {
  initials_.set_text(initials(address.name, address.address));
  avatar_.setAddress(address.address);
  const std::string colour = colourClass(avatarColor(address.address));
  if (colour != colourClass_) {
    if (!colourClass_.empty()) {
      remove_css_class(colourClass_);
    }
    add_css_class(colour);
    colourClass_ = colour;
  }
}

void AvatarView::showPicture() {
  const auto texture = textureOf(avatar_.image());
  picture_.set_paintable(texture);
  picture_.set_visible(texture != nullptr);
  initials_.set_visible(texture == nullptr);
}

}  // namespace tidewrack::ui
