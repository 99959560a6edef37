#pragma once

#include <string>

#include <gtkmm.h>

#include "intelligence/intelligence_service.h"

namespace tidewrack::ui {

/// A suggested reply: its text, its tone, and a button that copies the text.
class SmartReplyPill : public Gtk::Box {
 public:
  explicit SmartReplyPill(const IntelligenceService::ReplySuggestion& suggestion);
  ~SmartReplyPill() override;
  SmartReplyPill(const SmartReplyPill&) = delete;
  SmartReplyPill& operator=(const SmartReplyPill&) = delete;

 private:
  void copy();
  void showCopied(bool isCopied);

  static constexpr unsigned copiedMilliseconds = 1500;

  std::string text_;
  Gtk::Button button_;
  Gtk::Image* icon_;
  sigc::connection reset_;
};

}  // namespace tidewrack::ui
