#include "ui/sheet.h"

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int cardMargin = 24;
constexpr unsigned transitionMilliseconds = 200;

}  // namespace

Sheet::Sheet(Gtk::Widget& covered) : covered_(covered) {
  set_transition_type(Gtk::RevealerTransitionType::CROSSFADE);
  set_transition_duration(transitionMilliseconds);
  set_can_target(false);
  set_visible(false);

  card_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  card_.set_propagate_natural_height(true);
  card_.set_propagate_natural_width(true);
  card_.set_halign(Gtk::Align::CENTER);
  card_.set_valign(Gtk::Align::CENTER);
  card_.set_vexpand(true);
  card_.set_margin(cardMargin);
  card_.add_css_class("sheet-card");
  backdrop_.add_css_class("sheet-backdrop");
  backdrop_.append(card_);
  set_child(backdrop_);
  gtk_accessible_update_property(GTK_ACCESSIBLE(gobj()), GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);

  const auto keys = Gtk::EventControllerKey::create();
  keys->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        if (key != GDK_KEY_Escape || !isPresented_) {
          return false;
        }
        if (close_) {
          close_();
        }
        return true;
      },
      false);
  add_controller(keys);
  property_child_revealed().signal_changed().connect([this] {
    if (!isPresented_ && !get_child_revealed()) {
      set_visible(false);
    }
  });
}

void Sheet::setContent(Gtk::Widget& content, int width) {
  content.set_size_request(width, -1);
  card_.set_child(content);
}

void Sheet::present() {
  if (isPresented_) {
    return;
  }
  isPresented_ = true;
  covered_.set_can_focus(false);
  covered_.set_can_target(false);
  set_visible(true);
  set_can_target(true);
  set_reveal_child(true);
}

void Sheet::dismiss() {
  if (!isPresented_) {
    return;
  }
  isPresented_ = false;
  set_can_target(false);
  covered_.set_can_focus(true);
  covered_.set_can_target(true);
  set_reveal_child(false);
}

}  // namespace tidewrack::ui
