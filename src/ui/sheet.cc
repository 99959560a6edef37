#include "ui/sheet.h"

#include <algorithm>
#include <vector>

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int cardMargin = 24;
constexpr unsigned transitionMilliseconds = 200;

// All presented sheets, the one that came last at the end.
std::vector<Sheet*>& presentedSheets() {
  static std::vector<Sheet*> sheets;
  return sheets;
}

void takeInput(Gtk::Widget& widget, bool takes) {
  widget.set_can_focus(takes);
  widget.set_can_target(takes);
}

GtkWidget* focusOf(Gtk::Widget& widget) {
  GtkRoot* root = gtk_widget_get_root(widget.gobj());
  return root != nullptr ? gtk_root_get_focus(root) : nullptr;
}

}  // namespace

Sheet::Sheet(Gtk::Widget& covered) : covered_(covered) {
  g_weak_ref_init(&focusBefore_, nullptr);
  set_transition_type(Gtk::RevealerTransitionType::CROSSFADE);
  set_transition_duration(transitionMilliseconds);
  takeInput(*this, false);
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

  // Escape belongs to what is open within the sheet first; Return to the sheet before its choices.
  const auto escape = Gtk::EventControllerKey::create();
  escape->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) { return key == GDK_KEY_Escape && escapePressed(); },
      false);
  add_controller(escape);
  const auto returns = Gtk::EventControllerKey::create();
  returns->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  returns->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        const bool isReturn = key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter;
        return isReturn && returnPressed();
      },
      false);
  add_controller(returns);
  property_child_revealed().signal_changed().connect([this] {
    if (!isPresented_ && !get_child_revealed()) {
      set_visible(false);
    }
  });
}

Sheet::~Sheet() {
  if (isPresented_) {
    std::erase(presentedSheets(), this);
  }
  g_weak_ref_clear(&focusBefore_);
}

void Sheet::setContent(Gtk::Widget& content, int width) {
  content.set_size_request(width, -1);
  card_.set_child(content);
}

void Sheet::present() {
  if (isPresented_ || get_parent() == nullptr) {
    return;
  }
  isPresented_ = true;
  g_weak_ref_set(&focusBefore_, focusOf(*this));
  takeInput(covered_, false);
  Sheet* below = nullptr;
  for (Sheet* sheet : presentedSheets()) {
    if (&sheet->covered_ == &covered_) {
      takeInput(*sheet, false);
      below = sheet;
    }
  }
  if (below != nullptr) {
    insert_after(*get_parent(), *below);
  }
  presentedSheets().push_back(this);
  set_visible(true);
  takeInput(*this, true);
  set_reveal_child(true);
  takeFocus();
}

void Sheet::dismiss() {
  if (!isPresented_) {
    return;
  }
  isPresented_ = false;
  takeInput(*this, false);
  leaveStack();
  set_reveal_child(false);
  if (auto* before = static_cast<GtkWidget*>(g_weak_ref_get(&focusBefore_))) {
    if (gtk_widget_get_mapped(before) != FALSE) {
      gtk_widget_grab_focus(before);
    }
    g_object_unref(before);
  }
}

// Gives the input to the sheet that is now on top, or back to the content.
void Sheet::leaveStack() {
  auto& sheets = presentedSheets();
  std::erase(sheets, this);
  const auto top = std::find_if(sheets.rbegin(), sheets.rend(),
                                [this](const Sheet* sheet) { return &sheet->covered_ == &covered_; });
  takeInput(top != sheets.rend() ? **top : covered_, true);
}

void Sheet::takeFocus() {
  card_.set_focusable(false);
  if (!card_.child_focus(Gtk::DirectionType::TAB_FORWARD)) {
    // Without any, the keys still have to come here rather than to what is covered.
    card_.set_focusable(true);
    card_.grab_focus();
  }
}

bool Sheet::escapePressed() {
  if (!isPresented_) {
    return false;
  }
  if (close_) {
    close_();
  }
  return true;
}

bool Sheet::returnPressed() {
  if (!isPresented_ || !defaultAction_ || GTK_IS_BUTTON(focusOf(*this))) {
    return false;
  }
  defaultAction_();
  return true;
}

}  // namespace tidewrack::ui
