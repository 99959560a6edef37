#include "ui/sidebar_view.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/localized.h"
#include "ui/sidebar_row_view.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

// Each new line is a row to make and to measure, so a long outline comes in several turns of the main loop.
constexpr guint newLinesPerTurn = 48;

Glib::RefPtr<SidebarItem> itemOf(const Glib::RefPtr<Glib::ObjectBase>& treeRow) {
  const auto row = std::dynamic_pointer_cast<Gtk::TreeListRow>(treeRow);
  return row ? std::dynamic_pointer_cast<SidebarItem>(row->get_item()) : nullptr;
}

std::vector<Glib::RefPtr<SidebarItem>> makeItems(const SidebarSection& section) {
  std::vector<Glib::RefPtr<SidebarItem>> items = {SidebarItem::heading(section.title)};
  for (const SidebarRow& row : section.rows) {
    items.push_back(SidebarItem::row(row));
  }
  if (section.progress) {
    items.push_back(SidebarItem::progress(*section.progress));
  }
  return items;
}

Glib::RefPtr<Gtk::SignalListItemFactory> makeRowFactory() {
  auto factory = Gtk::SignalListItemFactory::create();
  factory->signal_setup().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* expander = Gtk::make_managed<Gtk::TreeExpander>();
    expander->set_child(*Gtk::make_managed<SidebarRowView>());
    item->set_child(*expander);
  });
  factory->signal_bind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    const auto treeRow = std::dynamic_pointer_cast<Gtk::TreeListRow>(item->get_item());
    const auto sidebarItem = itemOf(treeRow);
    auto* expander = dynamic_cast<Gtk::TreeExpander*>(item->get_child());
    if (!sidebarItem || expander == nullptr) {
      return;
    }
    const bool isRow = sidebarItem->kind() == SidebarItem::Kind::row;
    item->set_selectable(isRow);
    item->set_activatable(isRow);
    expander->set_list_row(treeRow);
    dynamic_cast<SidebarRowView&>(*expander->get_child()).show(sidebarItem);
  });
  factory->signal_unbind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    auto* expander = dynamic_cast<Gtk::TreeExpander*>(item->get_child());
    if (expander != nullptr) {
      dynamic_cast<SidebarRowView&>(*expander->get_child()).forget();
      expander->set_list_row({});
    }
  });
  return factory;
}

}  // namespace

SidebarView::SidebarView(ContentView& screen)
    : screen_(screen), roots_(Gio::ListStore<SidebarItem>::create()) {
  tree_ = Gtk::TreeListModel::create(
      roots_,
      [](const Glib::RefPtr<Glib::ObjectBase>& item) -> Glib::RefPtr<Gio::ListModel> {
        return std::dynamic_pointer_cast<SidebarItem>(item)->children();
      },
      false, false);
  selection_ = Gtk::SingleSelection::create(tree_);
  selection_->set_autoselect(false);
  selection_->set_can_unselect(true);
  selection_->unselect_all();
  selection_->property_selected().signal_changed().connect([this] { selectionChosen(); });
  // The selected row may come up, or go, when a row above it is unfolded or folded.
  tree_->signal_items_changed().connect([this](guint, guint, guint) {
    if (!isUpdating_ && !selectionIdle_.connected()) {
      selectionIdle_ = Glib::signal_idle().connect([this] {
        selectionIdle_.disconnect();
        showSelection();
        return false;
      });
    }
  });
  list_.set_model(selection_);
  list_.set_factory(makeRowFactory());
  list_.add_css_class("navigation-sidebar");
  setIdentifier(list_, "sidebar.list");
  setAccessibleLabel(list_, localized("Mailboxes_title", "Mailboxes", "Sidebar title"));
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  set_vexpand(true);
  set_child(list_);
  observeScreen();
  showSections();
}

SidebarView::~SidebarView() {
  sectionsIdle_.disconnect();
  selectionIdle_.disconnect();
}

void SidebarView::observeScreen() {
  using Kind = SidebarSection::Kind;
  const auto follow = [this](auto& field, std::initializer_list<Kind> kinds) {
    subscriptions_.push_back(field.observe([this, kinds = std::vector(kinds)] { sectionsChanged(kinds); }));
  };
  follow(screen_.libraries, {Kind::libraries});
  follow(screen_.messages, {Kind::libraries});
  follow(screen_.cachedLabelClassification, {Kind::mailboxes, Kind::gmailCategories, Kind::labels});
  follow(screen_.cachedCategoryCounts, {Kind::smartCategories});
  follow(screen_.intelligenceEnabled, {Kind::smartCategories});
  follow(screen_.enableCategoryDetection, {Kind::smartCategories});
  if (auto* categorizer = screen_.categorizer()) {
    follow(categorizer->isCategorizing, {Kind::smartCategories});
    follow(categorizer->totalToProcess, {Kind::smartCategories});
    follow(categorizer->processedCount, {Kind::smartCategories});
  }
  subscriptions_.push_back(screen_.sidebarSelection.observe([this] { showSelection(); }));
}

void SidebarView::sectionsChanged(const std::vector<SidebarSection::Kind>& kinds) {
  for (const auto kind : kinds) {
    sections_.at(static_cast<std::size_t>(kind)).isStale = true;
  }
  // Several fields change together; the sections are worked out once.
  scheduleSections(Glib::PRIORITY_HIGH);
}

void SidebarView::scheduleSections(int priority) {
  if (!sectionsIdle_.connected()) {
    sectionsIdle_ = Glib::signal_idle().connect(
        [this] {
          sectionsIdle_.disconnect();
          showSections();
          return false;
        },
        priority);
  }
}

void SidebarView::showSections() {
  std::vector<Glib::RefPtr<SidebarItem>> wanted;
  for (const auto kind : allSidebarSections) {
    auto& shown = sections_.at(static_cast<std::size_t>(kind));
    if (std::exchange(shown.isStale, false)) {
      const auto section = sidebarSection(screen_, kind);
      shown.items = section ? makeItems(*section) : std::vector<Glib::RefPtr<SidebarItem>>();
    }
    wanted.insert(wanted.end(), shown.items.begin(), shown.items.end());
  }
  const auto count = std::min<std::size_t>(wanted.size(), roots_->get_n_items() + newLinesPerTurn);
  const auto end = wanted.begin() + static_cast<std::ptrdiff_t>(count);
  std::vector<Glib::RefPtr<SidebarItem>> inLine(wanted.begin(), end);
  isUpdating_ = true;
  SidebarItem::bringInLine(*roots_.get(), inLine);
  isUpdating_ = false;
  std::copy(inLine.begin(), inLine.end(), wanted.begin());
  auto at = wanted.begin();
  for (auto& shown : sections_) {
    const auto endOfSection = at + static_cast<std::ptrdiff_t>(shown.items.size());
    shown.items.assign(at, endOfSection);
    at = endOfSection;
  }
  showSelection();
  if (count < wanted.size()) {
    scheduleSections(Glib::PRIORITY_DEFAULT_IDLE);  // Behind what the user does, and behind drawing.
  }
}

Glib::RefPtr<SidebarItem> SidebarView::itemAt(guint position) const {
  return itemOf(selection_->get_object(position));
}

void SidebarView::showSelection() {
  const SidebarSelection wanted = screen_.sidebarSelection().value_or(SidebarSelection::allLibraries());
  guint found = GTK_INVALID_LIST_POSITION;
  for (guint position = 0; position < selection_->get_n_items(); ++position) {
    const auto item = itemAt(position);
    if (item && item->kind() == SidebarItem::Kind::row && item->row().selection == wanted) {
      found = position;
      break;
    }
  }
  isUpdating_ = true;
  selection_->set_selected(found);
  isUpdating_ = false;
}

void SidebarView::selectionChosen() {
  if (isUpdating_) {
    return;
  }
  const auto item = itemAt(selection_->get_selected());
  if (item && item->kind() == SidebarItem::Kind::row) {
    screen_.sidebarSelection.set(item->row().selection);
  }
}

}  // namespace tidewrack::ui
