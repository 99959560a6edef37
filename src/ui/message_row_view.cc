#include "ui/message_row_view.h"

#include "reading/display_text.h"
#include "reading/message_row.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int lineSpacing = 8;
constexpr int avatarSize = 36;
constexpr int snippetLines = 2;
constexpr int footerIconSize = 12;
constexpr std::size_t rowBytes = 1000;  // more than any row has room for

void makeOneLine(Gtk::Label& label) {
  label.set_xalign(0.0F);
  label.set_single_line_mode(true);
  label.set_ellipsize(Pango::EllipsizeMode::END);
}

}  // namespace

MessageRowView::MessageRowView() : Gtk::Box(Gtk::Orientation::HORIZONTAL, 12), avatar_(avatarSize) {
  add_css_class("message-row");
  avatar_.set_valign(Gtk::Align::START);
  append(avatar_);

  auto* lines = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, lineSpacing);
  lines->set_hexpand(true);
  append(*lines);

  auto* top = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  makeOneLine(subject_);
  subject_.set_hexpand(true);
  subject_.add_css_class("row-subject");
  date_.add_css_class("row-date");
  date_.set_valign(Gtk::Align::BASELINE);
  subject_.set_valign(Gtk::Align::BASELINE);
  top->append(subject_);
  top->append(date_);
  lines->append(*top);

  makeOneLine(sender_);
  sender_.add_css_class("row-secondary");
  lines->append(sender_);

  snippet_.set_xalign(0.0F);
  snippet_.set_yalign(0.0F);
  snippet_.set_wrap(true);
  snippet_.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
  snippet_.set_lines(snippetLines);
  snippet_.set_ellipsize(Pango::EllipsizeMode::END);
  snippet_.add_css_class("row-secondary");
  lines->append(snippet_);

  footer_.add_css_class("row-footer");
  attachments_.append(*makeSymbol("paperclip", footerIconSize));
  attachments_.append(attachmentsText_);
  conversation_.append(*makeSymbol("bubble.left.and.bubble.right", footerIconSize));
  conversation_.append(conversationText_);
  footer_.append(attachments_);
  footer_.append(conversation_);
  lines->append(footer_);
}

void MessageRowView::show(const EmailMessage& message, std::int64_t conversationCount) {
  const MessageRow row = makeMessageRow(message, conversationCount);
  setIdentifier(*this, row.identifier);
  avatar_.show(message.from);
  subject_.set_text(shortenedLine(row.subject, rowBytes));
  date_.set_text(row.dateText);
  sender_.set_text(shortenedLine(row.sender, rowBytes));
  snippet_.set_text(shortenedLine(row.snippet, rowBytes));
  snippet_.set_visible(!row.snippet.empty());
  attachmentsText_.set_text(row.attachmentsText);
  attachments_.set_visible(!row.attachmentsText.empty());
  conversationText_.set_text(row.conversationText);
  conversation_.set_visible(!row.conversationText.empty());
  footer_.set_visible(row.hasFooter());
}

}  // namespace tidewrack::ui
