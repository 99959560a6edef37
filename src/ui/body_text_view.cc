#include "ui/body_text_view.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace tidewrack::ui {
namespace {

constexpr int minimumSizeSteps = -5;
constexpr int maximumSizeSteps = 10;

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The end of a piece of about `length` bytes: behind a line end where there is one, never within a character
// or a CRLF.
std::size_t endOfPiece(std::string_view text, std::size_t begin, std::size_t length) {
  std::size_t end = begin + length;
  if (end >= text.size()) {
    return text.size();
  }
  const std::size_t lineEnd = text.rfind('\n', end - 1);
  if (lineEnd != std::string_view::npos && lineEnd >= begin) {
    return lineEnd + 1;
  }
  while (end > begin && (isContinuation(text[end]) || text[end - 1] == '\r')) {
    --end;
  }
  return end;
}

// What the view can lay out: no zero bytes, and no line longer than `maximum`. `lineLength` is that of the
// line before and of the last line after.
std::string layable(std::string_view piece, std::size_t maximum, std::size_t& lineLength) {
  std::string result;
  result.reserve(piece.size() + piece.size() / maximum + 1);
  for (const char byte : piece) {
    if (byte == '\n' || byte == '\r') {
      lineLength = 0;
    } else if (++lineLength > maximum && !isContinuation(byte)) {
      result += '\n';
      lineLength = 1;
    }
    if (byte == '\0') {
      result += "\xEF\xBF\xBD";
    } else {
      result += byte;
    }
  }
  return result;
}

}  // namespace

BodyTextView::BodyTextView(int margin) {
  buffer_ = textView_.get_buffer();
  textView_.set_editable(false);
  textView_.set_accepts_tab(false);  // The keyboard leads on through the window.
  textView_.set_cursor_visible(false);
  textView_.set_wrap_mode(Gtk::WrapMode::WORD_CHAR);
  textView_.set_left_margin(margin);
  textView_.set_right_margin(margin);
  textView_.set_top_margin(margin);
  textView_.set_bottom_margin(margin);
  textView_.set_vexpand(true);
  textView_.add_css_class("body-text");
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  set_expand(true);
  set_child(textView_);
  const auto adjustment = get_vadjustment();
  adjustment->signal_value_changed().connect([this] { appendIfNearEnd(); });
  adjustment->signal_changed().connect([this] { appendIfNearEnd(); });
}

BodyTextView::~BodyTextView() {
  idle_.disconnect();
}

void BodyTextView::setText(std::shared_ptr<const std::string> text) {
  if (text == text_) {
    return;
  }
  text_ = std::move(text);
  shown_ = 0;
  lineLength_ = 0;
  idle_.disconnect();
  buffer_->set_text("");
  get_vadjustment()->set_value(0);
  appendPiece();
}

void BodyTextView::appendPiece() {
  if (!text_ || shown_ >= text_->size()) {
    return;
  }
  const std::size_t end = endOfPiece(*text_, shown_, pieceSize);
  const std::string piece =
      layable(std::string_view(*text_).substr(shown_, end - shown_), maximumLineLength, lineLength_);
  shown_ = end;
  GtkTextIter iter;
  gtk_text_buffer_get_end_iter(buffer_->gobj(), &iter);
  gtk_text_buffer_insert(buffer_->gobj(), &iter, piece.data(), static_cast<int>(piece.size()));
}

void BodyTextView::appendIfNearEnd() {
  if (!text_ || shown_ >= text_->size() || idle_.connected()) {
    return;
  }
  const auto adjustment = get_vadjustment();
  const double below = adjustment->get_upper() - adjustment->get_value() - adjustment->get_page_size();
  if (below < 2 * adjustment->get_page_size()) {
    idle_ = Glib::signal_idle().connect(
        [this] {
          idle_.disconnect();
          appendPiece();
          return false;
        },
        Glib::PRIORITY_LOW);
  }
}

void BodyTextView::changeSize(int steps) {
  sizeSteps_ = std::clamp(sizeSteps_ + steps, minimumSizeSteps, maximumSizeSteps);
  applySize();
}

void BodyTextView::resetSize() {
  sizeSteps_ = 0;
  applySize();
}

void BodyTextView::applySize() {
  if (!sizeSheet_) {
    sizeSheet_ = Gtk::CssProvider::create();
    textView_.get_style_context()->add_provider(sizeSheet_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  }
  sizeSheet_->load_from_data("textview { font-size: " + std::to_string(100 + 10 * sizeSteps_) + "%; }");
}

}  // namespace tidewrack::ui
