#include "ui/toolbar_view.h"

#include "platform/count_text.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

ToolbarView::ToolbarView(ContentView& screen, const std::set<ToolbarAction>& offered)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 4), screen_(screen) {
  for (const ToolbarAction action : offered) {
    Slot slot = makeSlot(action);
    append(*slot.box);
    slots_.emplace(action, slot);
  }
  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(screen_.libraries);
  follow(screen_.isImporting);
  follow(screen_.advancedFilters);
  follow(screen_.iCloudSyncEnabled);
  follow(screen_.discoveredRemoteLibraries);
  // Messages change while mail is categorised, one by one; the toolbar asks only whether there are any.
  subscriptions_.push_back(screen_.messages.observe([this] {
    if (screen_.messages().empty() == hasMessages_) {
      refresh();
    }
  }));
  refresh();
}

ToolbarView::Slot ToolbarView::makeSlot(ToolbarAction action) {
  Slot slot;
  slot.box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  slot.button = Gtk::make_managed<Gtk::Button>();
  auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 4);
  slot.icon = Gtk::make_managed<Gtk::Image>();
  slot.badge = Gtk::make_managed<Gtk::Label>();
  slot.badge->add_css_class("toolbar-badge");
  content->append(*slot.icon);
  content->append(*slot.badge);
  slot.button->set_child(*content);
  slot.button->add_css_class("flat");
  slot.button->signal_clicked().connect([this, action] { perform(action, screen_); });
  slot.spinner = Gtk::make_managed<Gtk::Spinner>();
  slot.box->append(*slot.button);
  slot.box->append(*slot.spinner);
  return slot;
}

void ToolbarView::refresh() {
  hasMessages_ = !screen_.messages().empty();
  for (auto& [action, slot] : slots_) {
    slot.box->set_visible(false);
  }
  for (const ToolbarItem& item : toolbarItems(screen_)) {
    const auto slot = slots_.find(item.action);
    if (slot != slots_.end()) {
      show(item, slot->second);
    }
  }
}

void ToolbarView::show(const ToolbarItem& item, Slot& slot) {
  slot.box->set_visible(true);
  setIdentifier(*slot.button, item.identifier);
  setSymbol(*slot.icon, item.icon, item.tint);
  slot.button->set_sensitive(item.isEnabled);
  slot.button->set_can_focus(item.action != ToolbarAction::cloudStatus);  // It only tells.
  const std::string& tip = item.help.empty() ? item.label : item.help;
  if (slot.button->get_tooltip_text().raw() != tip) {
    slot.button->set_tooltip_text(tip);
  }
  setAccessibleLabel(*slot.button, item.label.empty() ? item.help : item.label);
  slot.badge->set_visible(item.badge.has_value());
  slot.badge->set_text(formatCount(item.badge.value_or(0)));
  slot.spinner->set_visible(item.showsSpinner);
  slot.spinner->set_spinning(item.showsSpinner);
}

}  // namespace tidewrack::ui
