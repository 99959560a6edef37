#include "ui/confirmation_view.h"

#include <utility>

#include "ui/style.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 50;
constexpr int padding = 24;

}  // namespace

ConfirmationView::ConfirmationView(const std::function<void()>& onConfirm,
                                   const std::function<void()>& onCancel)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 14) {
  set_margin(padding);
  set_size_request(ConfirmationMetrics::minimumWidth, -1);
  setIdentifier(*this, "confirmation.root");
  icon_.set_pixel_size(iconSize);
  append(icon_);
  for (Gtk::Label* label : {&title_, &message_}) {
    label->set_wrap(true);
    label->set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    label->set_justify(Gtk::Justification::CENTER);
    label->set_max_width_chars(40);
    append(*label);
  }
  title_.add_css_class("title-2");
  setIdentifier(title_, "confirmation.title");
  setIdentifier(message_, "confirmation.message");

  auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
  buttons->set_homogeneous(true);
  buttons->set_margin_top(8);
  cancel_.signal_clicked().connect(onCancel);
  confirm_.signal_clicked().connect(onConfirm);
  setIdentifier(cancel_, "confirmation.cancel");
  setIdentifier(confirm_, "confirmation.confirm");
  for (Gtk::Button* button : {&cancel_, &confirm_}) {
    button->add_css_class("confirmation-button");
    button->set_hexpand(true);
    buttons->append(*button);
  }
  append(*buttons);
}

void ConfirmationView::show(const Confirmation& confirmation) {
  const std::string tint = confirmation.isDestructive ? "red" : "";
  setSymbol(icon_, confirmation.icon, tint);
  title_.set_text(confirmation.title);
  message_.set_text(confirmation.message);
  cancel_.set_label(confirmation.cancelTitle);
  confirm_.set_label(confirmation.confirmTitle);
  confirm_.remove_css_class(tintClass("red"));
  if (confirmation.isDestructive) {
    confirm_.add_css_class(tintClass("red"));
  }
}

}  // namespace tidewrack::ui
