#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <gtkmm.h>

namespace tidewrack::ui {

/// The line at the head of a sheet: a close button, and the title in the middle.
class SheetHeader : public Gtk::CenterBox {
 public:
  SheetHeader(const std::string& title, const std::function<void()>& close);
  [[nodiscard]] Gtk::Button& closeButton() { return close_; }

 private:
  Gtk::Button close_;
};

/// A header for its parent to keep.
SheetHeader* makeSheetHeader(const std::string& title, const std::function<void()>& close);

/// What a sheet shows that has nothing to list: an icon over a line, and a second one where there is more to
/// say.
Gtk::Box* makeSheetPlaceholder(std::string_view symbol, const std::string& text,
                               const std::string& explanation = {});

}  // namespace tidewrack::ui
