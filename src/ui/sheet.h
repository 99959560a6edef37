#pragma once

#include <functional>

#include <gtkmm.h>

namespace tidewrack::ui {

/// A sheet within the window: a card over the dimmed content, which takes no input meanwhile. Put it as an
/// overlay over the content that it covers.
class Sheet : public Gtk::Revealer {
 public:
  /// `covered` is the content under the sheet; both belong to the same window.
  explicit Sheet(Gtk::Widget& covered);

  /// What the card shows; `width` is that of the card where the window has room.
  void setContent(Gtk::Widget& content, int width);
  /// Called when the user wants the sheet gone (Escape); empty for a sheet that stays.
  void setCloseRequest(std::function<void()> close) { close_ = std::move(close); }

  void present();
  void dismiss();
  [[nodiscard]] bool isPresented() const { return isPresented_; }

 private:
  Gtk::Widget& covered_;
  Gtk::Box backdrop_{Gtk::Orientation::VERTICAL};
  Gtk::ScrolledWindow card_;
  std::function<void()> close_;
  bool isPresented_ = false;
};

}  // namespace tidewrack::ui
