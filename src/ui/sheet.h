#pragma once

#include <functional>

#include <gtkmm.h>

namespace tidewrack::ui {

/// A sheet within the window: a card over the dimmed content, which takes no input meanwhile. Put it as an
/// overlay over the content that it covers. Sheets over the same content may be presented on top of one
/// another; only the one that came last takes input. While a sheet is there the keyboard stays in it, and
/// goes back to where it was when the sheet goes.
class Sheet : public Gtk::Revealer {
 public:
  /// `covered` is the content under the sheet; both belong to the same window, and the content outlives the
  /// sheet.
  explicit Sheet(Gtk::Widget& covered);
  ~Sheet() override;
  Sheet(const Sheet&) = delete;
  Sheet& operator=(const Sheet&) = delete;

  /// What the card shows; `width` is that of the card where the window has room. Replaces what it showed.
  void setContent(Gtk::Widget& content, int width);
  /// Called when the user wants the sheet gone (Escape); empty for a sheet that stays.
  void setCloseRequest(std::function<void()> close) { close_ = std::move(close); }
  /// Called on the Return key, unless a button has the keyboard and so takes it. May be empty.
  void setDefaultAction(std::function<void()> action) { defaultAction_ = std::move(action); }

  /// Does nothing while the sheet lies in no window.
  void present();
  void dismiss();
  [[nodiscard]] bool isPresented() const { return isPresented_; }

 protected:
  /// Moves the keyboard to the first widget of the card that takes it.
  void takeFocus();

 private:
  bool escapePressed();
  bool returnPressed();
  void leaveStack();

  Gtk::Widget& covered_;
  Gtk::Box backdrop_{Gtk::Orientation::VERTICAL};
  Gtk::ScrolledWindow card_;
  std::function<void()> close_;
  std::function<void()> defaultAction_;
  GWeakRef focusBefore_{};  ///< What had the keyboard before the sheet came.
  bool isPresented_ = false;
};

}  // namespace tidewrack::ui
