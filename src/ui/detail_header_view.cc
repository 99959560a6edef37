#include "ui/detail_header_view.h"

#include <array>
#include <iterator>
#include <utility>
#include <variant>

#include "platform/localized.h"
#include "reading/display_text.h"
#include "ui/body_text_view.h"
#include "ui/chip_flow_layout.h"
#include "ui/style.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int avatarSize = 48;
constexpr int rowIconSize = 14;
constexpr int badgeIconSize = 12;
constexpr int badgeSpacing = 6;
constexpr int lineSpacing = 12;
constexpr int bodyPickerWidth = 220;
constexpr int longRowHeight = 96;
constexpr std::size_t maximumBadges = 100;

constexpr std::array bodyModes = {BodyDisplayMode::text, BodyDisplayMode::html};
constexpr std::array backgrounds = {HTMLBackgroundPreference::automatic, HTMLBackgroundPreference::light,
                                    HTMLBackgroundPreference::dark};

template <typename Options, typename Value>
std::size_t indexIn(const Options& options, Value value) {
  std::size_t index = 0;
  while (options[index] != value) {
    ++index;
  }
  return index;
}

// A row's text: a label, or, for thousands of recipients, a small view of its own that scrolls.
Gtk::Widget* makeRowText(const std::string& text) {
  if (text.size() > maximumLineBytes) {
    auto* view = Gtk::make_managed<BodyTextView>(0);
    view->set_vexpand(false);
    view->set_size_request(-1, longRowHeight);
    view->setText(std::make_shared<const std::string>(text));
    return view;
  }
  auto* label = Gtk::make_managed<WrappedLabel>();
  label->setText(shortenedLine(text));
  label->label().add_css_class("detail-row");
  return label;
}

Gtk::Widget* makeRow(const DetailHeaderRow& row) {
  auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  auto* icon = makeSymbol(row.icon, rowIconSize);
  icon->set_valign(Gtk::Align::START);
  icon->add_css_class("detail-row-icon");
  line->append(*icon);
  line->append(*makeRowText(row.text));
  return line;
}

Gtk::Widget* makeBadge(const MessageBadge& badge) {
  auto* pill = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 4);
  pill->add_css_class("pill-badge");
  if (const auto* name = std::get_if<std::string_view>(&badge.color)) {
    pill->add_css_class(tintClass(*name));
  } else {
    pill->add_css_class(colourClass(std::get<RGBColor>(badge.color)));
  }
  pill->append(*makeSymbol(badge.systemImage, badgeIconSize));
  auto* title = Gtk::make_managed<Gtk::Label>(shortenedLine(badge.title));
  title->set_ellipsize(Pango::EllipsizeMode::MIDDLE);
  title->set_max_width_chars(40);
  pill->append(*title);
  offerTooltip(*pill, [title] { return title->get_text().raw(); });
  return pill;
}

}  // namespace

DetailHeaderView::DetailHeaderView(MessageDetail& detail, Settings& settings)
    : Gtk::Box(Gtk::Orientation::VERTICAL, lineSpacing),
      detail_(detail),
      avatar_(avatarSize, GravatarService::shared(), settings),
      intelligence_(detail) {
  add_css_class("detail-header");
  set_vexpand(false);
  makeTop();
  badges_.set_layout_manager(ChipFlowLayout::create(badgeSpacing, badgeSpacing));
  column_.append(badges_);
  column_.append(intelligence_);
  append(scroller_);
  makePickers();

  const auto follow = [this](auto& field, void (DetailHeaderView::*refresh)()) {
    subscriptions_.push_back(field.observe([this, refresh] { (this->*refresh)(); }));
  };
  follow(detail_.message, &DetailHeaderView::showMessage);
  follow(detail_.headerRows, &DetailHeaderView::showRows);
  follow(detail_.badges, &DetailHeaderView::showBadges);
  follow(detail_.hasHTML, &DetailHeaderView::showPickers);
  follow(detail_.displayMode, &DetailHeaderView::showPickers);
  follow(detail_.htmlBackground, &DetailHeaderView::showPickers);
  showMessage();
  showRows();
  showBadges();
  showPickers();
}

void DetailHeaderView::makeTop() {
  auto* top = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 14);
  avatar_.set_valign(Gtk::Align::START);
  top->append(avatar_);
  lines_.set_hexpand(true);
  subject_.label().add_css_class("detail-subject");
  setIdentifier(subject_.label(), "messageDetail.subject");
  lines_.append(subject_);
  top->append(lines_);
  column_.append(*top);
}

void DetailHeaderView::makePickers() {
  std::vector<SegmentedChoice::Option> modes;
  modes.reserve(std::size(bodyModes));
  for (const auto mode : bodyModes) {
    modes.push_back({title(mode), {}});
  }
  bodyPicker_ = Gtk::make_managed<SegmentedChoice>(
      localized("body_picker_title", "Body", "Body selector title"), modes);
  bodyPicker_->set_size_request(bodyPickerWidth / 2, -1);
  bodyPicker_->set_hexpand(false);
  setIdentifier(*bodyPicker_, "messageDetail.bodyPicker");
  bodyPicker_->signalChosen().connect(
      [this](std::size_t index) { detail_.setDisplayMode(bodyModes[index]); });

  std::vector<SegmentedChoice::Option> choices;
  choices.reserve(std::size(backgrounds));
  for (const auto background : backgrounds) {
    choices.push_back({title(background), icon(background)});
  }
  backgroundPicker_ = Gtk::make_managed<SegmentedChoice>(
      localized("html_background_picker_title", "HTML Background", "HTML background picker title"), choices);
  backgroundPicker_->set_tooltip_text(localized("html_background_picker_help",
                                                "Change HTML reader background",
                                                "Tooltip for HTML background selector"));
  setIdentifier(*backgroundPicker_, "messageDetail.backgroundPicker");
  backgroundPicker_->signalChosen().connect(
      [this](std::size_t index) { detail_.setHTMLBackground(backgrounds[index]); });

  pickers_.append(*bodyPicker_);
  pickers_.append(*backgroundPicker_);
  append(pickers_);
}

void DetailHeaderView::showMessage() {
  if (const auto& message = detail_.message()) {
    avatar_.show(message->from);
    subject_.setText(shortenedLine(message->subject));
    scroller_.get_vadjustment()->set_value(0);
  }
}

// The rows come in a box of their own each time. GTK remembers that the height of an empty box does not
// depend on its width, and would lay the first rows out by that.
void DetailHeaderView::showRows() {
  if (rows_ != nullptr) {
    lines_.remove(*std::exchange(rows_, nullptr));
  }
  const auto& rows = detail_.headerRows();
  if (rows.empty()) {
    return;
  }
  rows_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 4);
  setIdentifier(*rows_, "messageDetail.rows");
  for (const DetailHeaderRow& row : rows) {
    rows_->append(*makeRow(row));
  }
  lines_.append(*rows_);
}

void DetailHeaderView::showBadges() {
  removeChildren(badges_);
  const auto& badges = detail_.badges();
  for (std::size_t index = 0; index < badges.size() && index < maximumBadges; ++index) {
    badges_.append(*makeBadge(badges[index]));
  }
  if (badges.size() > maximumBadges) {
    badges_.append(*makeLabel("+" + std::to_string(badges.size() - maximumBadges), {"row-footer"}));
  }
  badges_.set_visible(!detail_.badges().empty());
}

void DetailHeaderView::showPickers() {
  pickers_.set_visible(detail_.hasHTML());
  backgroundPicker_->set_visible(detail_.displayMode() == BodyDisplayMode::html);
  bodyPicker_->select(indexIn(bodyModes, detail_.displayMode()));
  backgroundPicker_->select(indexIn(backgrounds, detail_.htmlBackground()));
}

}  // namespace tidewrack::ui
