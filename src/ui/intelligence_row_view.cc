#include "ui/intelligence_row_view.h"

#include <initializer_list>

#include "reading/intelligence_look.h"
#include "ui/answer_label.h"
#include "ui/chip_flow_layout.h"
#include "ui/smart_reply_pill.h"
#include "ui/style.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int chipSpacing = 6;
constexpr int headIconSize = 14;
constexpr int categoryIconSize = 12;
constexpr int sentimentIconSize = 16;
constexpr int popoverWidth = 260;
constexpr int answerWidthInChars = 36;
constexpr int popoverMaximumHeight = 360;  // A longer answer scrolls.

// Fills a popover that hangs under an anchor. The widgets stand below each other.
void fill(Gtk::Popover& popover, Gtk::Widget& anchor, std::initializer_list<Gtk::Widget*> widgets) {
  auto* column = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 10);
  column->add_css_class("intelligence-popover");
  column->set_size_request(popoverWidth, -1);
  for (Gtk::Widget* widget : widgets) {
    column->append(*widget);
  }
  popover.set_child(*column);
  popover.set_position(Gtk::PositionType::BOTTOM);
  popover.set_parent(anchor);
}

Gtk::ScrolledWindow* scrolling(Gtk::Widget& content) {
  auto* scroller = Gtk::make_managed<Gtk::ScrolledWindow>();
  scroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  scroller->set_propagate_natural_height(true);
  scroller->set_max_content_height(popoverMaximumHeight);
  scroller->set_child(content);
  return scroller;
}

Gtk::Button* makeAgainButton(const char* title, const char* identifier) {
  Gtk::Button* button = makeIconButton("arrow.clockwise", title);
  button->add_css_class("flat");
  button->set_halign(Gtk::Align::START);
  setIdentifier(*button, identifier);
  return button;
}

// Pops up or down, whichever differs.
void presentPopover(Gtk::Popover& popover, bool isShown) {
  if (isShown == popover.get_visible()) {
    return;
  }
  if (isShown) {
    popover.popup();
  } else {
    popover.popdown();
  }
}

}  // namespace

IntelligenceRowView::IntelligenceRowView(MessageDetail& detail)
    : detail_(detail),
      summary_("text.alignleft", "Resumir"),
      detect_("folder.badge.gearshape", "Detectar categoría"),
      analyze_("face.smiling", "Analizar tono"),
      replies_("arrowshape.turn.up.left", "Respuestas") {
  summaryAnchor_.append(summary_);
  repliesAnchor_.append(replies_);
  set_layout_manager(ChipFlowLayout::create(chipSpacing, chipSpacing));
  setIdentifier(*this, "intelligence.row");
  setIdentifier(summary_, "intelligence.summary");
  setIdentifier(detect_, "intelligence.detectCategory");
  setIdentifier(category_, "intelligence.category");
  setIdentifier(analyze_, "intelligence.analyzeSentiment");
  setIdentifier(sentiment_, "intelligence.sentiment");
  setIdentifier(replies_, "intelligence.replies");
  auto* head = makeSymbol("sparkles", headIconSize, "purple");
  head->add_css_class("intelligence-head");
  category_.add_css_class("pill-badge");
  category_.set_valign(Gtk::Align::CENTER);
  sentiment_.set_pixel_size(sentimentIconSize);
  sentiment_.add_css_class("intelligence-head");
  for (Gtk::Widget* item : std::initializer_list<Gtk::Widget*>{head, &summaryAnchor_, &detect_, &category_,
                                                               &analyze_, &sentiment_, &repliesAnchor_}) {
    append(*item);
  }
  makeSummary();
  makeReplies();
  connectChips();
  followDetail();
}

// A popover is a child that its anchor does not know of.
IntelligenceRowView::~IntelligenceRowView() {
  subscriptions_.clear();
  summaryPopover_.unparent();
  repliesPopover_.unparent();
}

void IntelligenceRowView::makeSummary() {
  setIdentifier(summaryPopover_, "intelligence.summaryPopover");
  summaryText_ = makeAnswerLabel(std::string(), answerWidthInChars);
  setIdentifier(*summaryText_, "intelligence.summaryText");
  summarizeAgain_ = makeAgainButton("Regenerar resumen", "intelligence.summarizeAgain");
  fill(summaryPopover_, summaryAnchor_, {scrolling(*summaryText_), summarizeAgain_});
  summaryPopover_.signal_closed().connect([this] { detail_.showSummaryPopover.set(false); });
}

void IntelligenceRowView::makeReplies() {
  setIdentifier(repliesPopover_, "intelligence.repliesPopover");
  suggestAgain_ = makeAgainButton("Regenerar respuestas", "intelligence.suggestAgain");
  fill(repliesPopover_, repliesAnchor_,
       {makeLabel("Respuestas sugeridas", {"intelligence-heading"}), scrolling(pills_), suggestAgain_});
  repliesPopover_.signal_closed().connect([this] { detail_.showRepliesPopover.set(false); });
}

void IntelligenceRowView::connectChips() {
  summary_.signal_clicked().connect([this] {
    if (detail_.generatedSummary()) {
      detail_.showSummaryPopover.set(true);
    } else {
      detail_.generateSummary();
    }
  });
  replies_.signal_clicked().connect([this] {
    if (detail_.replySuggestions().empty()) {
      detail_.generateReplies();
    } else {
      detail_.showRepliesPopover.set(true);
    }
  });
  summarizeAgain_->signal_clicked().connect([this] { detail_.generateSummary(); });
  suggestAgain_->signal_clicked().connect([this] { detail_.generateReplies(); });
  detect_.signal_clicked().connect([this] { detail_.detectCategory(); });
  analyze_.signal_clicked().connect([this] { detail_.analyzeSentiment(); });
}

void IntelligenceRowView::followDetail() {
  const auto follow = [this](auto& field, void (IntelligenceRowView::*refresh)()) {
    subscriptions_.push_back(field.observe([this, refresh] { (this->*refresh)(); }));
    (this->*refresh)();
  };
  follow(detail_.intelligenceRow, &IntelligenceRowView::showItems);
  follow(detail_.detectedCategory, &IntelligenceRowView::showCategory);
  follow(detail_.isDetectingCategory, &IntelligenceRowView::showCategory);
  follow(detail_.analyzedSentiment, &IntelligenceRowView::showSentiment);
  follow(detail_.isAnalyzingSentiment, &IntelligenceRowView::showSentiment);
  follow(detail_.generatedSummary, &IntelligenceRowView::showSummary);
  follow(detail_.isGeneratingSummary, &IntelligenceRowView::showSummary);
  follow(detail_.showSummaryPopover, &IntelligenceRowView::showSummary);
  follow(detail_.replySuggestions, &IntelligenceRowView::fillReplies);
  follow(detail_.isGeneratingReplies, &IntelligenceRowView::showReplies);
  follow(detail_.showRepliesPopover, &IntelligenceRowView::showReplies);
}

void IntelligenceRowView::showItems() {
  const IntelligenceRow& row = detail_.intelligenceRow();
  set_visible(row.isShown());
  summaryAnchor_.set_visible(row.summary);
  repliesAnchor_.set_visible(row.replies);
  showCategory();
  showSentiment();
}

void IntelligenceRowView::showSummary() {
  summary_.showRunning(detail_.isGeneratingSummary());
  summarizeAgain_->set_sensitive(!detail_.isGeneratingSummary());
  summaryText_->set_text(detail_.generatedSummary().value_or(std::string()));
  presentPopover(summaryPopover_, detail_.showSummaryPopover());
}

void IntelligenceRowView::showCategory() {
  const auto& category = detail_.detectedCategory();
  const bool isOffered = detail_.intelligenceRow().category;
  detect_.showRunning(detail_.isDetectingCategory());
  detect_.set_visible(isOffered && !category);
  category_.set_visible(isOffered && category);
  removeChildren(category_);
  if (!category) {
    return;
  }
  const CategoryLook shown = look(*category);
  category_.set_css_classes({"pill-badge", tintClass(shown.tint)});
  category_.append(*makeSymbol(shown.icon, categoryIconSize));
  category_.append(*Gtk::make_managed<Gtk::Label>(std::string(shown.title)));
}

void IntelligenceRowView::showSentiment() {
  const auto& sentiment = detail_.analyzedSentiment();
  const bool isOffered = detail_.intelligenceRow().sentiment;
  analyze_.showRunning(detail_.isAnalyzingSentiment());
  analyze_.set_visible(isOffered && !sentiment);
  sentiment_.set_visible(isOffered && sentiment);
  if (sentiment) {
    const SentimentLook shown = look(*sentiment);
    setSymbol(sentiment_, shown.icon, shown.tint);
    sentiment_.set_tooltip_text(toneTip(*sentiment));
    setAccessibleLabel(sentiment_, toneTip(*sentiment));
  }
}

void IntelligenceRowView::fillReplies() {
  removeChildren(pills_);
  for (const auto& suggestion : detail_.replySuggestions()) {
    pills_.append(*Gtk::make_managed<SmartReplyPill>(suggestion));
  }
}

void IntelligenceRowView::showReplies() {
  replies_.showRunning(detail_.isGeneratingReplies());
  suggestAgain_->set_sensitive(!detail_.isGeneratingReplies());
  presentPopover(repliesPopover_, detail_.showRepliesPopover());
}

}  // namespace tidewrack::ui
