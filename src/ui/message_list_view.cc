#include "ui/message_list_view.h"

#include <adwaita.h>

#include "platform/localized.h"
#include "reading/icons.h"
#include "ui/message_row_view.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr const char* listPage = "list";
constexpr const char* emptyPage = "empty";

Glib::RefPtr<Gtk::SignalListItemFactory> makeRowFactory(Settings& settings) {
  auto factory = Gtk::SignalListItemFactory::create();
  factory->signal_setup().connect([&settings](const Glib::RefPtr<Gtk::ListItem>& item) {
    item->set_child(*Gtk::make_managed<MessageRowView>(GravatarService::shared(), settings));
  });
  factory->signal_bind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    const auto message = std::dynamic_pointer_cast<MessageListItem>(item->get_item());
    auto* row = dynamic_cast<MessageRowView*>(item->get_child());
    if (message && row != nullptr) {
      const auto show = [row, shown = message.get()] {
        row->show(shown->message(), shown->conversationCount());
      };
      show();
      message->whenChanged(show);
    }
  });
  factory->signal_unbind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
    if (const auto message = std::dynamic_pointer_cast<MessageListItem>(item->get_item())) {
      message->whenChanged(nullptr);
    }
  });
  return factory;
}

}  // namespace

MessageListView::MessageListView(ContentView& screen)
    : Gtk::Box(Gtk::Orientation::VERTICAL), screen_(screen), model_(MessageListModel::create()) {
  makeSearchField();
  makeList();
  makeEmptyPage();
  stack_.set_vexpand(true);
  stack_.set_hhomogeneous(false);
  stack_.set_vhomogeneous(false);
  append(stack_);
  subscriptions_.push_back(screen_.cachedFilteredMessages.observe([this] { messagesChanged(); }));
  subscriptions_.push_back(screen_.cachedConversationCounts.observe([this] { messagesChanged(); }));
  subscriptions_.push_back(screen_.selectedMessageID.observe([this] {
    if (!messagesIdle_.connected()) {
      showSelection(true);
    }
  }));
  subscriptions_.push_back(screen_.searchText.observe([this] {
    if (search_.get_text().raw() != screen_.searchText()) {
      search_.set_text(screen_.searchText());
    }
  }));
  showMessages();
}

MessageListView::~MessageListView() {
  messagesIdle_.disconnect();
  scrollIdle_.disconnect();
}

void MessageListView::makeSearchField() {
  const std::string placeholder =
      localized("search_placeholder", "Search by subject or content", "Search field placeholder");
  // gtkmm 4.8 would ask the wrong class for this.
  g_object_set(search_.gobj(), "placeholder-text", placeholder.c_str(), nullptr);
  search_.set_hexpand(true);
  search_.add_css_class("list-search");
  setIdentifier(search_, "messages.searchField");
  setAccessibleLabel(search_, placeholder);
  // At once, without the delay of "search-changed".
  search_.signal_changed().connect([this] { screen_.searchText.set(search_.get_text()); });
  search_.signal_stop_search().connect([this] { search_.set_text(""); });
  search_.signal_activate().connect([this] { list_.grab_focus(); });
  auto* bar = Gtk::make_managed<Gtk::Box>();
  bar->add_css_class("search-bar");
  bar->append(search_);
  append(*bar);
}

void MessageListView::makeList() {
  selection_ = Gtk::SingleSelection::create(model_);
  selection_->set_autoselect(false);
  selection_->set_can_unselect(true);
  selection_->unselect_all();
  selection_->property_selected().signal_changed().connect([this] { selectionChosen(); });
  list_.set_model(selection_);
  list_.set_factory(makeRowFactory(screen_.services().settings));
  list_.set_show_separators(false);
  list_.add_css_class("message-list");
  setIdentifier(list_, "messages.list");
  setAccessibleLabel(list_, localized("Messages_title", "Messages", "Messages list title"));
  scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  scroller_.set_child(list_);
  stack_.add(scroller_, listPage);
}

void MessageListView::makeEmptyPage() {
  GtkWidget* page = adw_status_page_new();
  adw_status_page_set_icon_name(ADW_STATUS_PAGE(page), iconName("envelope").c_str());
  adw_status_page_set_title(
      ADW_STATUS_PAGE(page),
      localized("no_messages_placeholder", "No messages", "Empty list placeholder").c_str());
  gtk_widget_add_css_class(page, "compact");
  auto* widget = wrapWidget(page);
  setIdentifier(*widget, "messages.empty");
  stack_.add(*widget, emptyPage);
}

void MessageListView::focusSearch() {
  search_.grab_focus();
  search_.select_region(0, -1);
}

void MessageListView::messagesChanged() {
  // The list and the counts change together; the rows are made anew once.
  if (!messagesIdle_.connected()) {
    messagesIdle_ = Glib::signal_idle().connect(
        [this] {
          messagesIdle_.disconnect();
          showMessages();
          return false;
        },
        Glib::PRIORITY_HIGH);
  }
}

void MessageListView::showMessages() {
  const auto& messages = screen_.cachedFilteredMessages();
  const auto& counts = screen_.cachedConversationCounts();
  if (model_->shows(messages, counts)) {
    return;
  }
  isUpdating_ = true;
  const bool keepsPlaces = model_->replace(messages, counts);
  isUpdating_ = false;
  stack_.set_visible_child(messages.empty() ? emptyPage : listPage);
  if (!keepsPlaces && scroller_.get_vadjustment()->get_value() > 0) {
    list_.activate_action("list.scroll-to-item", Glib::Variant<guint32>::create(0));
  }
  showSelection(!keepsPlaces);
}

void MessageListView::showSelection(bool scrolls) {
  const auto& id = screen_.selectedMessageID();
  const guint selected = selection_->get_selected();
  if (id && selected < model_->size() && model_->messageAt(selected)->id == *id) {
    return;
  }
  const auto position = id ? screen_.filteredPositionOf(*id) : std::nullopt;
  isUpdating_ = true;
  selection_->set_selected(position ? static_cast<guint>(*position) : GTK_INVALID_LIST_POSITION);
  isUpdating_ = false;
  if (position && scrolls) {
    scrollTo(static_cast<guint>(*position));
  }
}

void MessageListView::selectionChosen() {
  if (isUpdating_) {
    return;
  }
  const guint position = selection_->get_selected();
  if (position < model_->size()) {
    screen_.selectMessage(model_->messageAt(position));
  } else {
    screen_.selectMessage(nullptr);
  }
}

void MessageListView::scrollTo(guint position) {
  // After the rows have been laid out: before that the list knows no heights.
  scrollIdle_.disconnect();
  scrollIdle_ = Glib::signal_idle().connect(
      [this, position] {
        if (position < model_->size()) {
          list_.activate_action("list.scroll-to-item", Glib::Variant<guint32>::create(position));
        }
        return false;
      },
      Glib::PRIORITY_LOW);
}

}  // namespace tidewrack::ui
