#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <gtkmm.h>

namespace tidewrack::ui {

/// Shows a plain text body of any size, selectable. The text goes into the view piece by piece, as far as
/// the reader has scrolled, so that a body of 50 MB opens at once; a line of more than `maximumLineLength`
/// bytes is laid out as several. Main thread only.
class BodyTextView : public Gtk::ScrolledWindow {
 public:
  /// `margin`: blank pixels around the text.
  explicit BodyTextView(int margin = 18);
  ~BodyTextView() override;
  BodyTextView(const BodyTextView&) = delete;
  BodyTextView& operator=(const BodyTextView&) = delete;

  /// Shows a text from its beginning; null shows nothing. The same text again keeps the scroll position.
  void setText(std::shared_ptr<const std::string> text);
  /// Steps of a tenth in the size of the text.
  void changeSize(int steps);
  void resetSize();

  [[nodiscard]] Gtk::TextView& view() { return textView_; }
  /// How many bytes of the text stand in the view so far.
  [[nodiscard]] std::size_t shownBytes() const { return shown_; }

  static constexpr std::size_t pieceSize = std::size_t{64} * 1024;
  static constexpr std::size_t maximumLineLength = 4000;

 private:
  void appendPiece();
  void appendIfNearEnd();
  void applySize();

  Gtk::TextView textView_;
  Glib::RefPtr<Gtk::TextBuffer> buffer_;
  Glib::RefPtr<Gtk::CssProvider> sizeSheet_;
  std::shared_ptr<const std::string> text_;
  std::size_t shown_ = 0;
  std::size_t lineLength_ = 0;  ///< Of the last line in the view.
  int sizeSteps_ = 0;
  sigc::connection idle_;
};

}  // namespace tidewrack::ui
