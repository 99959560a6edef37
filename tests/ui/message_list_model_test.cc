#include "ui/message_list_model.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "ui/message_row_view.h"
#include "ui/window_fixture.h"

namespace tidewrack::ui {
namespace {

constexpr int manyMessages = 500'000;
// GTK keeps some 205 rows and asks for each twice at first; ten times that is still nothing.
constexpr std::uint64_t fewItems = 2'000;

SharedMessageList makeMessages(int count, const std::string& prefix) {
  MessageList list;
  list.reserve(static_cast<std::size_t>(count));
  for (int number = 0; number < count; ++number) {
    auto message = std::make_shared<EmailMessage>();
    message->id = prefix + std::to_string(number);
    message->subject = "Message " + std::to_string(number);
    message->conversationID = number < 2 ? Text("pair") : message->id;
    list.push_back(std::move(message));
  }
  return list;
}

std::shared_ptr<const ConversationCounts> makeCounts() {
  return std::make_shared<ConversationCounts>(ConversationCounts{{Text("pair"), 2}});
}

class MessageListModelTest : public WidgetTest {
 protected:
  MessageListModelTest() {
    model_ = MessageListModel::create();
    selection_ = Gtk::SingleSelection::create(model_);
    selection_->set_autoselect(false);
    selection_->set_can_unselect(true);
    auto factory = Gtk::SignalListItemFactory::create();
    factory->signal_setup().connect([this](const Glib::RefPtr<Gtk::ListItem>& item) {
      item->set_child(*Gtk::make_managed<MessageRowView>(service_, settings_));
    });
    factory->signal_bind().connect([](const Glib::RefPtr<Gtk::ListItem>& item) {
      const auto message = std::dynamic_pointer_cast<MessageListItem>(item->get_item());
      dynamic_cast<MessageRowView&>(*item->get_child())
          .show(message->message(), message->conversationCount());
    });
    list_.set_model(selection_);
    list_.set_factory(factory);
    scroller_.set_child(list_);
    window_.set_child(scroller_);
    window_.set_default_size(400, 700);
    window_.present();
    runUntil([this] { return window_.get_mapped(); });
    runPending();
  }

  TemporaryFolder folder_;
  Settings settings_{folder_ / "settings.ini"};
  GravatarService service_{folder_ / "Gravatar"};
  Glib::RefPtr<MessageListModel> model_;
  Glib::RefPtr<Gtk::SingleSelection> selection_;
  Gtk::ListView list_;
  Gtk::ScrolledWindow scroller_;
  Gtk::Window window_;
};

TEST_F(MessageListModelTest, FiveHundredThousandRowsMakeFewRowObjects) {
  model_->replace(makeMessages(manyMessages, "m"), makeCounts());
  runPending();
  EXPECT_EQ(model_->get_n_items(), static_cast<guint>(manyMessages));
  EXPECT_GT(model_->itemsMade(), 0U);
  EXPECT_LT(model_->itemsMade(), fewItems);
}

TEST_F(MessageListModelTest, ReplacingTheContentWithARowSelectedMakesFewRowObjects) {
  model_->replace(makeMessages(manyMessages, "m"), makeCounts());
  runPending();
  selection_->set_selected(manyMessages / 2);
  runPending();
  const auto before = model_->itemsMade();
  model_->replace(makeMessages(manyMessages, "n"), makeCounts());
  runPending();
  EXPECT_LT(model_->itemsMade() - before, fewItems);
}

TEST_F(MessageListModelTest, AFarScrollMakesFewRowObjects) {
  model_->replace(makeMessages(manyMessages, "m"), makeCounts());
  runPending();
  const auto before = model_->itemsMade();
  list_.activate_action("list.scroll-to-item", Glib::Variant<guint32>::create(manyMessages - 10));
  runPending();
  EXPECT_GT(model_->itemsMade(), before);
  EXPECT_LT(model_->itemsMade() - before, fewItems);
}

TEST_F(MessageListModelTest, AnExchangedMessageMakesOneRowAnew) {
  const auto counts = makeCounts();
  const auto messages = makeMessages(manyMessages, "m");
  EXPECT_FALSE(model_->replace(messages, counts));
  runPending();
  const auto before = model_->itemsMade();
  auto changed = std::make_shared<EmailMessage>(*messages[3]);
  changed->subject = "Changed";
  EXPECT_TRUE(model_->replace(messages.replacing(3, changed), counts));
  runPending();
  EXPECT_EQ(model_->messageAt(3)->subject, "Changed");
  EXPECT_LE(model_->itemsMade() - before, 2U);
}

TEST_F(MessageListModelTest, AConversationMissingFromTheMapCountsAsOne) {
  model_->replace(makeMessages(3, "m"), makeCounts());
  const auto item = [this](guint position) {
    return std::dynamic_pointer_cast<MessageListItem>(model_->get_object(position));
  };
  EXPECT_EQ(item(0)->conversationCount(), 2);
  EXPECT_EQ(item(1)->conversationCount(), 2);
  EXPECT_EQ(item(2)->conversationCount(), 1);
  EXPECT_EQ(item(3), nullptr);
}

TEST_F(MessageListModelTest, AnEmptyListFollowsAFullOne) {
  model_->replace(makeMessages(100, "m"), makeCounts());
  runPending();
  model_->replace(SharedMessageList(), makeCounts());
  runPending();
  EXPECT_EQ(model_->size(), 0U);
  model_->replace(makeMessages(2, "n"), makeCounts());
  EXPECT_EQ(model_->get_n_items(), 2U);
  EXPECT_EQ(std::dynamic_pointer_cast<MessageListItem>(model_->get_object(1))->message().id, "n1");
}

TEST_F(MessageListModelTest, ARowFollowsTheMessageOfItsPlace) {
  model_->replace(makeMessages(manyMessages, "m"), makeCounts());
  runPending();
  const auto item = std::dynamic_pointer_cast<MessageListItem>(model_->get_object(1));
  EXPECT_EQ(item->message().id, "m1");
  const auto before = model_->itemsMade();
  model_->replace(makeMessages(manyMessages / 2, "n"), makeCounts());
  runPending();
  EXPECT_EQ(item->message().id, "n1");
  EXPECT_EQ(model_->itemsMade(), before) << "no row is made anew";
  EXPECT_EQ(model_->get_n_items(), static_cast<guint>(manyMessages / 2));
  model_->replace(SharedMessageList(), makeCounts());
  model_->replace(makeMessages(1000, "o"), makeCounts());
  runPending();
  EXPECT_EQ(item->message().id, "o1");
  EXPECT_EQ(model_->itemsMade(), before);
}

}  // namespace
}  // namespace tidewrack::ui
