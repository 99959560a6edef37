#include "ui/import_status_view.h"

#include <utility>

#include "ui/style.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

using Metrics = StatusPanelMetrics;

constexpr int messagePadding = 12;
constexpr int spinnerSize = 32;
constexpr unsigned bounceMilliseconds = 450;  // the length of the animation in the style sheet

}  // namespace

ImportStatusView::ImportStatusView(bool isOverlay, std::function<void()> onDismiss)
    : Gtk::Box(Gtk::Orientation::VERTICAL, Metrics::itemSpacing), onDismiss_(std::move(onDismiss)) {
  const int padding = isOverlay ? Metrics::overlayPadding : Metrics::sheetPadding;
  set_margin(padding);
  setIdentifier(*this, "importStatus.panel");
  if (isOverlay) {
    set_size_request(ImportStatusOverlayChrome::minimumWidth, -1);
  }

  icon_.set_pixel_size(Metrics::iconSize);
  icon_.add_css_class("status-icon");
  append(icon_);

  title_.add_css_class("status-title");
  title_.set_wrap(true);
  title_.set_justify(Gtk::Justification::CENTER);
  setIdentifier(title_, "importStatus.title");
  append(title_);

  message_.add_css_class("status-message");
  message_.set_wrap(true);
  message_.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
  message_.set_justify(Gtk::Justification::CENTER);
  message_.set_margin_start(messagePadding);
  message_.set_margin_end(messagePadding);
  setIdentifier(message_, "importStatus.message");
  append(message_);

  bar_.set_hexpand(true);
  append(bar_);
  spinner_.set_size_request(spinnerSize, spinnerSize);
  append(spinner_);

  details_.add_css_class("status-details");
  append(details_);

  dismiss_.set_label(statusDismissTitle());
  dismiss_.add_css_class("status-dismiss");
  setIdentifier(dismiss_, "importStatus.dismiss");
  dismiss_.signal_clicked().connect([this] { onDismiss_(); });
  append(dismiss_);
}

ImportStatusView::~ImportStatusView() {
  bounceEnd_.disconnect();
}

void ImportStatusView::show(const ImportStatus& status) {
  const bool isChange = status_ && *status_ != status;
  status_ = status;
  setSymbol(icon_, status.icon(), status.color());
  title_.set_text(status.title());
  message_.set_text(status.message());
  showBar(status);
  showDetails(status.detailItems());
  dismiss_.set_visible(status.showsDismissButton());
  if (!dismissTint_.empty()) {
    dismiss_.remove_css_class(dismissTint_);
  }
  dismissTint_ = tintClass(status.color());
  dismiss_.add_css_class(dismissTint_);
  if (isChange) {
    bounce();
  }
}

void ImportStatusView::focusDismissButton() {
  if (dismiss_.get_visible()) {
    dismiss_.grab_focus();
  }
}

void ImportStatusView::showBar(const ImportStatus& status) {
  const auto fraction = status.progressFraction();
  const bool isIndeterminate = status.showsBar() && !fraction;
  bar_.set_visible(status.showsBar() && fraction.has_value());
  bar_.set_fraction(fraction.value_or(0.0));
  spinner_.set_visible(isIndeterminate);
  spinner_.set_spinning(isIndeterminate);
}

void ImportStatusView::showDetails(const std::vector<StatusDetail>& details) {
  details_.set_visible(!details.empty());
  bool areSameRows = details.size() == rows_.size();
  for (std::size_t index = 0; areSameRows && index < details.size(); ++index) {
    areSameRows = details[index].id == rows_[index].id;
  }
  if (!areSameRows) {
    makeDetailRows(details);
  }
  for (std::size_t index = 0; index < details.size(); ++index) {
    setSymbol(*rows_[index].mark, icon(details[index].state), color(details[index].state));
    rows_[index].text->set_text(details[index].text);
  }
}

void ImportStatusView::makeDetailRows(const std::vector<StatusDetail>& details) {
  removeChildren(details_);
  rows_.clear();
  for (const StatusDetail& detail : details) {
    DetailRow row{detail.id, Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, Metrics::markSpacing),
                  Gtk::make_managed<Gtk::Image>(), makeLabel({}, {"status-detail"})};
    row.mark->set_pixel_size(Metrics::markWidth);
    row.mark->set_valign(Gtk::Align::START);
    row.text->set_lines(Metrics::rowMaximumLines);
    row.text->set_ellipsize(Pango::EllipsizeMode::END);
    row.text->set_valign(Gtk::Align::START);
    row.text->set_hexpand(true);
    row.box->append(*row.mark);
    row.box->append(*row.text);
    details_.append(*row.box);
    rows_.push_back(row);
  }
}

void ImportStatusView::bounce() {
  bounceEnd_.disconnect();
  icon_.add_css_class("bounce");
  bounceEnd_ = Glib::signal_timeout().connect(
      [this] {
        icon_.remove_css_class("bounce");
        return false;
      },
      bounceMilliseconds);
}

}  // namespace tidewrack::ui
