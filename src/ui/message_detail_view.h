#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"
#include "screen/content_view.h"
#include "ui/attachments_view.h"
#include "ui/body_text_view.h"
#include "ui/detail_header_view.h"
#include "ui/html_view.h"

namespace tidewrack::ui {

/// The detail column below its header bar: the selected message, or the line that stands for none. One for a
/// window; it is given one message after another.
class MessageDetailView : public Gtk::Box {
 public:
  /// Both must outlive the view.
  MessageDetailView(ContentView& screen, IntelligenceService& intelligence);
  ~MessageDetailView() override;
  MessageDetailView(const MessageDetailView&) = delete;
  MessageDetailView& operator=(const MessageDetailView&) = delete;

  /// Size of the body's text, in steps of a tenth.
  void zoomIn();
  void zoomOut();
  void resetZoom();

  [[nodiscard]] MessageDetail& detail() { return detail_; }
  /// The web view; null until the first HTML body is shown.
  [[nodiscard]] HTMLView* htmlView() { return html_; }
  [[nodiscard]] BodyTextView& textView() { return text_; }

 private:
  void makePlaceholder();
  void makeNotice();
  HTMLView& ensureHTMLView();
  void showMessage();
  void showBody();
  void showNoBodySoon();
  void htmlUnavailable();
  void hideNotice();
  void showSaveError();
  void showIntelligenceError();

  ContentView& screen_;
  MessageDetail detail_;
  Gtk::Stack stack_;
  Gtk::Box page_{Gtk::Orientation::VERTICAL};
  DetailHeaderView header_;
  Gtk::Revealer notice_;
  Gtk::Stack bodies_;
  Gtk::Box noBody_;
  BodyTextView text_;
  HTMLView* html_ = nullptr;
  AttachmentsView attachments_;
  std::optional<Text> noticeMessageID_;  ///< The message whose page could not be shown.
  gulong darkHandler_ = 0;
  sigc::connection blank_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
