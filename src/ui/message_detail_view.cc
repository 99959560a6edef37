#include "ui/message_detail_view.h"

#include <adwaita.h>

#include "platform/localized.h"
#include "reading/icons.h"
#include "ui/alerts.h"
#include "ui/style.h"
#include "ui/web_library.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr const char* messagePage = "message";
constexpr const char* placeholderPage = "placeholder";
// For how long the body before may stand under a new header. Hiding the page costs more than most bodies
// take.
constexpr unsigned blankAfterMilliseconds = 100;

// Hands a pressed link to the desktop.
void openOutside(Gtk::Widget& from, const std::string& url) {
  gtk_show_uri(GTK_WINDOW(from.get_root()->gobj()), url.c_str(), GDK_CURRENT_TIME);
}

}  // namespace

MessageDetailView::MessageDetailView(ContentView& screen, IntelligenceService& intelligence)
    : Gtk::Box(Gtk::Orientation::VERTICAL),
      screen_(screen),
      detail_(screen.services().executor, screen.services().settings, intelligence),
      header_(detail_, screen.services().settings),
      attachments_(detail_) {
  setIdentifier(page_, "messageDetail.root");
  setIdentifier(text_.view(), "messageDetail.text");
  setAccessibleLabel(text_.view(), localized("body_picker_title", "Body", "Body selector title"));
  page_.append(header_);
  makeNotice();
  page_.append(notice_);
  bodies_.set_vexpand(true);
  bodies_.set_hhomogeneous(false);
  bodies_.set_vhomogeneous(false);
  bodies_.add(noBody_);
  bodies_.add(text_);
  page_.append(bodies_);
  page_.append(attachments_);
  stack_.set_vexpand(true);
  stack_.set_hhomogeneous(false);  // What is hidden is not measured, which a start would feel.
  stack_.set_vhomogeneous(false);
  stack_.add(page_, messagePage);
  makePlaceholder();
  append(stack_);

  detail_.setSystemIsDark(isDark());
  darkHandler_ = g_signal_connect(adw_style_manager_get_default(), "notify::dark",
                                  G_CALLBACK(+[](AdwStyleManager*, GParamSpec*, gpointer self) {
                                    static_cast<MessageDetailView*>(self)->detail_.setSystemIsDark(isDark());
                                  }),
                                  this);
  subscriptions_.push_back(screen_.selectedMessageID.observe([this] { showMessage(); }));
  subscriptions_.push_back(screen_.messages.observe([this] { showMessage(); }));
  subscriptions_.push_back(detail_.body.observe([this] { showBody(); }));
  subscriptions_.push_back(detail_.saveErrorMessage.observe([this] { showSaveError(); }));
  subscriptions_.push_back(detail_.intelligenceError.observe([this] { showIntelligenceError(); }));
  showMessage();
}

MessageDetailView::~MessageDetailView() {
  blank_.disconnect();
  g_signal_handler_disconnect(adw_style_manager_get_default(), darkHandler_);
}

void MessageDetailView::makePlaceholder() {
  GtkWidget* page = adw_status_page_new();
  adw_status_page_set_icon_name(ADW_STATUS_PAGE(page), iconName("envelope.open").c_str());
  adw_status_page_set_title(
      ADW_STATUS_PAGE(page),
      localized("no_message_selected", "No message selected", "Detail placeholder").c_str());
  auto* widget = wrapWidget(page);
  setIdentifier(*widget, "messageDetail.placeholder");
  stack_.add(*widget, placeholderPage);
}

void MessageDetailView::makeNotice() {
  auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  line->add_css_class("body-notice");
  line->append(*makeSymbol("exclamationmark.triangle.fill", 16, "orange"));
  auto* label = makeLabel(localized("html_unavailable_notice",
                                    "The page of this message could not be shown. This is its text.",
                                    "Line over a text body whose HTML failed"));
  label->set_hexpand(true);
  line->append(*label);
  setIdentifier(notice_, "messageDetail.notice");
  notice_.set_child(*line);
}

HTMLView& MessageDetailView::ensureHTMLView() {
  if (html_ == nullptr) {
    html_ = Gtk::make_managed<HTMLView>();
    html_->signalUnavailable().connect([this] { htmlUnavailable(); });
    html_->signalOpenLink().connect([this](const std::string& url) { openOutside(*this, url); });
    bodies_.add(*html_);
  }
  return *html_;
}

void MessageDetailView::showMessage() {
  const auto message = screen_.selectedMessage();
  detail_.setMessage(message);
  stack_.set_visible_child(message ? messagePage : placeholderPage);
  if (!message || noticeMessageID_ != message->id) {
    hideNotice();
  }
}

void MessageDetailView::showBody() {
  const DetailBody& body = detail_.body();
  blank_.disconnect();
  if (body.mode == BodyDisplayMode::html) {
    hideNotice();
    if (body.html && !loadWebLibrary()) {
      htmlUnavailable();
      return;
    }
    if (body.html) {
      auto& view = ensureHTMLView();
      view.update(body.html, body.appearance, body.invertContent);
      // A page that cannot be shown at all has turned the mode to text by now.
      if (detail_.displayMode() == BodyDisplayMode::html) {
        bodies_.set_visible_child(view);
        text_.setText(nullptr);
      }
    } else {
      showNoBodySoon();
    }
    return;
  }
  if (!body.text) {
    showNoBodySoon();
    return;
  }
  text_.setText(body.text);
  bodies_.set_visible_child(text_);
  if (html_ != nullptr) {
    html_->clear();
  }
}

void MessageDetailView::showNoBodySoon() {
  blank_ = Glib::signal_timeout().connect(
      [this] {
        bodies_.set_visible_child(noBody_);
        return false;
      },
      blankAfterMilliseconds);
}

void MessageDetailView::htmlUnavailable() {
  const auto& message = detail_.message();
  if (!message || detail_.displayMode() != BodyDisplayMode::html) {
    return;
  }
  noticeMessageID_ = message->id;
  notice_.set_reveal_child(true);
  detail_.setDisplayMode(BodyDisplayMode::text);
}

void MessageDetailView::hideNotice() {
  noticeMessageID_.reset();
  notice_.set_reveal_child(false);
}

void MessageDetailView::showSaveError() {
  if (const auto& error = detail_.saveErrorMessage()) {
    showAlert(
        *this,
        localized("save_attachment_error_title", "Save Attachment Error", "Save attachment alert title"),
        *error, [this] { detail_.saveErrorMessage.set(std::nullopt); });
  }
}

void MessageDetailView::showIntelligenceError() {
  if (const auto& error = detail_.intelligenceError()) {
    showAlert(*this, "Error de Apple Intelligence", *error,
              [this] { detail_.intelligenceError.set(std::nullopt); });
  }
}

void MessageDetailView::zoomIn() {
  if (detail_.displayMode() == BodyDisplayMode::text) {
    text_.changeSize(1);
  } else if (html_ != nullptr) {
    html_->zoomIn();
  }
}

void MessageDetailView::zoomOut() {
  if (detail_.displayMode() == BodyDisplayMode::text) {
    text_.changeSize(-1);
  } else if (html_ != nullptr) {
    html_->zoomOut();
  }
}

void MessageDetailView::resetZoom() {
  text_.resetSize();
  if (html_ != nullptr) {
    html_->resetZoom();
  }
}

}  // namespace tidewrack::ui
