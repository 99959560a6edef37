#pragma once

#include <string>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "reading/message_detail.h"
#include "ui/intelligence_chip.h"

namespace tidewrack::ui {

/// The row of chips with which the reader asks the model about a message, and the popovers with its longer
/// answers. Follows the detail's fields; not visible while the detail offers no item.
class IntelligenceRowView : public Gtk::Box {
 public:
  /// `detail` outlives the view.
  explicit IntelligenceRowView(MessageDetail& detail);
  ~IntelligenceRowView() override;
  IntelligenceRowView(const IntelligenceRowView&) = delete;
  IntelligenceRowView& operator=(const IntelligenceRowView&) = delete;

 private:
  void makeSummary();
  void makeReplies();
  void connectChips();
  void followDetail();
  void showItems();
  void showSummary();
  void showCategory();
  void showSentiment();
  void fillReplies();
  void showReplies();

  MessageDetail& detail_;
  // The popovers hang under these, not under the chips: what lies in a chip that rests cannot be used.
  Gtk::Box summaryAnchor_;
  Gtk::Box repliesAnchor_;
  IntelligenceChip summary_;
  IntelligenceChip detect_;
  Gtk::Box category_{Gtk::Orientation::HORIZONTAL, 4};
  IntelligenceChip analyze_;
  Gtk::Image sentiment_;
  IntelligenceChip replies_;
  Gtk::Popover summaryPopover_;
  Gtk::Label* summaryText_ = nullptr;
  Gtk::Button* summarizeAgain_ = nullptr;
  Gtk::Popover repliesPopover_;
  Gtk::Box pills_{Gtk::Orientation::VERTICAL, 6};
  Gtk::Button* suggestAgain_ = nullptr;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
