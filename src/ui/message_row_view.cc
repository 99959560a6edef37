#include "ui/message_row_view.h"

#include <algorithm>
#include <array>
#include <string>

#include "reading/display_text.h"
#include "ui/picture_texture.h"
#include "ui/row_painter.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int padding = 10;
constexpr int lineSpacing = 8;
constexpr int avatarSize = 36;
constexpr int avatarGap = 12;
constexpr int dateGap = 8;
constexpr int minimumWidth = 200;
constexpr int snippetLines = 2;
constexpr int footerGap = 12;
constexpr int footerIconSize = 12;
constexpr int footerIconGap = 4;
constexpr std::size_t rowBytes = 1000;  // more than any row has room for

// The four kinds of text: headline, secondary line, caption, and the initials.
constexpr RowPainter::Style headline{.scale = 1.0, .weight = Pango::Weight::SEMIBOLD, .opacity = 1.0F};
constexpr RowPainter::Style secondary{.scale = 0.92, .weight = Pango::Weight::NORMAL, .opacity = 0.75F};
constexpr RowPainter::Style caption{.scale = 0.82, .weight = Pango::Weight::NORMAL, .opacity = 0.65F};

}  // namespace

MessageRowView::MessageRowView(GravatarService& pictures, Settings& settings)
    : Glib::ObjectBase("TidewrackMessageRow"), avatar_(pictures, settings, [this] { queue_draw(); }) {
  set_overflow(Gtk::Overflow::HIDDEN);
}

void MessageRowView::show(const EmailMessage& message, std::int64_t conversationCount) {
  const bool hadFooter = row_.hasFooter();
  row_ = makeMessageRow(message, conversationCount);
  for (std::string* text : {&row_.subject, &row_.sender, &row_.snippet}) {
    *text = shortenedLine(*text, rowBytes);
  }
  initials_ = initials(message.from.name, message.from.address);
  avatarColour_ = avatarColor(message.from.address);
  avatar_.setAddress(message.from.address);
  setIdentifier(*this, row_.identifier);
  setAccessibleLabel(*this, row_.subject + ", " + row_.sender + ", " + row_.dateText);
  // A new height is the whole window's concern.
  if (row_.hasFooter() != hadFooter) {
    queue_resize();
  } else {
    queue_draw();
  }
}

Gtk::SizeRequestMode MessageRowView::get_request_mode_vfunc() const {
  return Gtk::SizeRequestMode::CONSTANT_SIZE;
}

void MessageRowView::measure_vfunc(Gtk::Orientation orientation, int /*for_size*/, int& minimum, int& natural,
                                   int& minimum_baseline, int& natural_baseline) const {
  minimum_baseline = -1;
  natural_baseline = -1;
  if (orientation == Gtk::Orientation::HORIZONTAL) {
    minimum = minimumWidth;
    natural = minimumWidth;
    return;
  }
  int height = 2 * padding + RowPainter::lineHeight(*this, headline) + lineSpacing +
               RowPainter::lineHeight(*this, secondary) + lineSpacing +
               snippetLines * RowPainter::lineHeight(*this, secondary);
  if (row_.hasFooter()) {
    height += lineSpacing + std::max(RowPainter::lineHeight(*this, caption), footerIconSize);
  }
  minimum = height;
  natural = height;
}

void MessageRowView::snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) {
  RowPainter painter(*this, snapshot);
  if (const auto picture = textureOf(avatar_.image())) {
    painter.avatar(padding, padding, avatarSize, picture);
  } else {
    painter.avatar(padding, padding, avatarSize, avatarColour_, initials_);
  }

  const int left = padding + avatarSize + avatarGap;
  const int width = std::max(get_width() - left - padding, 1);
  int y = padding;
  const int dateWidth = std::min(painter.widthOf(row_.dateText, caption), width);
  const int dateDrop = RowPainter::lineHeight(*this, headline) - RowPainter::lineHeight(*this, caption);
  painter.text(row_.subject, headline, left, y, std::max(width - dateWidth - dateGap, 1));
  painter.text(row_.dateText, caption, left + width - dateWidth, y + dateDrop / 2, dateWidth);

  y += RowPainter::lineHeight(*this, headline) + lineSpacing;
  painter.text(row_.sender, secondary, left, y, width);
  y += RowPainter::lineHeight(*this, secondary) + lineSpacing;
  painter.text(row_.snippet, secondary, left, y, width, snippetLines);
  y += snippetLines * RowPainter::lineHeight(*this, secondary) + lineSpacing;

  int x = left;
  const int iconDrop = (RowPainter::lineHeight(*this, caption) - footerIconSize) / 2;
  const auto mark = [&](const char* symbol, const std::string& text) {
    if (text.empty()) {
      return;
    }
    painter.symbol(symbol, caption, x, y + iconDrop, footerIconSize);
    x += footerIconSize + footerIconGap;
    const int textWidth = std::min(painter.widthOf(text, caption), std::max(left + width - x, 1));
    painter.text(text, caption, x, y, textWidth);
    x += textWidth + footerGap;
  };
  mark("paperclip", row_.attachmentsText);
  mark("bubble.left.and.bubble.right", row_.conversationText);
}

}  // namespace tidewrack::ui
