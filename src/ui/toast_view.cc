#include "ui/toast_view.h"

#include <algorithm>
#include <numbers>

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 16;
constexpr int distanceFromEdge = 12;

// The spring of a response time (seconds of one undamped swing) and a damping fraction, for a mass of 1.
AdwSpringParams* makeSpring() {
  constexpr double frequency = 2.0 * std::numbers::pi / ToastMetrics::springResponse;
  return adw_spring_params_new(ToastMetrics::springDampingFraction, 1.0, frequency * frequency);
}

}  // namespace

ToastView::ToastView(ContentView& screen) : Gtk::Box(Gtk::Orientation::HORIZONTAL, 8), screen_(screen) {
  add_css_class("toast-pill");
  set_halign(Gtk::Align::CENTER);
  set_valign(Gtk::Align::START);
  set_margin_top(distanceFromEdge);
  set_can_target(false);
  set_visible(false);
  setIdentifier(*this, "toast");
  icon_.set_pixel_size(iconSize);
  icon_.set_margin_start(ToastMetrics::padding);
  text_.set_margin_end(ToastMetrics::padding);
  text_.set_ellipsize(Pango::EllipsizeMode::END);
  text_.set_max_width_chars(60);
  icon_.set_margin_top(ToastMetrics::padding);
  icon_.set_margin_bottom(ToastMetrics::padding);
  append(icon_);
  append(text_);

  animation_ = adw_spring_animation_new(GTK_WIDGET(gobj()), 0.0, 1.0, makeSpring(),
                                        adw_callback_animation_target_new(
                                            [](double value, gpointer self) {
                                              auto* view = static_cast<ToastView*>(self);
                                              view->shown_ = value;
                                              view->queue_draw();
                                            },
                                            this, nullptr));
  g_signal_connect(animation_, "done", G_CALLBACK(+[](AdwAnimation*, gpointer self) {
                     auto* view = static_cast<ToastView*>(self);
                     view->set_visible(view->screen_.currentToast().has_value());
                   }),
                   this);
  subscriptions_.push_back(screen_.currentToast.observe([this] { showToast(); }));
  showToast();
}

ToastView::~ToastView() {
  g_signal_handlers_disconnect_by_data(animation_, this);
  g_object_unref(animation_);
}

void ToastView::showToast() {
  const auto& toast = screen_.currentToast();
  if (!toast) {
    animateTo(0.0);
    return;
  }
  setSymbol(icon_, icon(toast->type), tint(toast->type));
  text_.set_text(toast->message);
  set_visible(true);
  gtk_accessible_update_property(GTK_ACCESSIBLE(gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 toast->message.c_str(), -1);
  animateTo(1.0);
}

void ToastView::animateTo(double target) {
  auto* spring = ADW_SPRING_ANIMATION(animation_);
  adw_spring_animation_set_value_from(spring, shown_);
  adw_spring_animation_set_value_to(spring, target);
  adw_animation_play(animation_);
}

void ToastView::snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) {
  const double opacity = std::clamp(shown_, 0.0, 1.0);
  snapshot->push_opacity(opacity);
  snapshot->save();
  const graphene_point_t offset{0.0F, static_cast<float>((shown_ - 1.0) * (get_height() + distanceFromEdge))};
  gtk_snapshot_translate(snapshot->gobj(), &offset);
  Gtk::Box::snapshot_vfunc(snapshot);
  snapshot->restore();
  snapshot->pop();
}

}  // namespace tidewrack::ui
