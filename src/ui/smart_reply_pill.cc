#include "ui/smart_reply_pill.h"

#include "ui/answer_label.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 14;
constexpr int textWidthInChars = 26;
constexpr const char* copyTip = "Copiar al portapapeles";

}  // namespace

SmartReplyPill::SmartReplyPill(const IntelligenceService::ReplySuggestion& suggestion)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 8),
      text_(suggestion.text),
      icon_(makeSymbol("doc.on.doc", iconSize)) {
  add_css_class("smart-reply");
  auto* lines = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
  lines->set_hexpand(true);
  lines->append(*makeAnswerLabel(text_, textWidthInChars));
  lines->append(*makeLabel(suggestion.tone, {"row-footer"}));
  append(*lines);

  button_.set_child(*icon_);
  button_.set_valign(Gtk::Align::CENTER);
  button_.add_css_class("flat");
  button_.set_tooltip_text(copyTip);
  setAccessibleLabel(button_, copyTip);
  setIdentifier(button_, "intelligence.copyReply." + suggestion.tone);
  button_.signal_clicked().connect([this] { copy(); });
  append(button_);
}

SmartReplyPill::~SmartReplyPill() {
  reset_.disconnect();
}

void SmartReplyPill::copy() {
  get_clipboard()->set_text(text_);
  showCopied(true);
  reset_.disconnect();
  reset_ = Glib::signal_timeout().connect(
      [this] {
        showCopied(false);
        return false;
      },
      copiedMilliseconds);
}

void SmartReplyPill::showCopied(bool isCopied) {
  setSymbol(*icon_, isCopied ? "checkmark" : "doc.on.doc");
}

}  // namespace tidewrack::ui
