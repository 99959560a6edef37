#include "screen/shared_message_list.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

constexpr std::size_t severalChunks = 2 * SharedMessageList::chunkSize + 7;

MessageList messages(std::size_t count) {
  MessageList list;
  for (std::size_t i = 0; i < count; ++i) {
    auto message = std::make_shared<EmailMessage>();
    message->id = std::to_string(i);
    list.push_back(message);
  }
  return list;
}

std::shared_ptr<const EmailMessage> other() {
  return std::make_shared<EmailMessage>();
}

std::shared_ptr<const Positions> at(Positions positions) {
  return std::make_shared<Positions>(std::move(positions));
}

TEST(SharedMessageList, HoldsWhatItWasMadeOf) {
  for (const std::size_t count :
       {std::size_t{0}, std::size_t{1}, SharedMessageList::chunkSize, severalChunks}) {
    const MessageList plain = messages(count);
    const SharedMessageList list = plain;
    EXPECT_EQ(list.size(), count);
    EXPECT_EQ(list.empty(), count == 0);
    EXPECT_TRUE(std::ranges::equal(list, plain));
    EXPECT_EQ(list.get(), plain);
    EXPECT_EQ(list, SharedMessageList(plain));
  }
}

TEST(SharedMessageList, AReplacedMessageLeavesTheListBeforeAsItWas) {
  const MessageList plain = messages(severalChunks);
  const SharedMessageList before = plain;
  const auto changed = other();
  const SharedMessageList after = before.replacing(1500, changed);
  EXPECT_EQ(before.get(), plain);
  EXPECT_EQ(after[1500], changed);
  EXPECT_EQ(after[1499], plain[1499]);
  EXPECT_NE(before, after);
  EXPECT_EQ(before, after.replacing(1500, plain[1500]));
  EXPECT_EQ(before.chunks()[0], after.chunks()[0]);
  EXPECT_NE(before.chunks()[1], after.chunks()[1]);
}

TEST(SharedMessageList, APartShowsTheMessagesAtItsPlaces) {
  const MessageList plain = messages(severalChunks);
  const auto part = SharedMessageList::part(plain, at({0, 5, 2000}));
  EXPECT_EQ(part.get(), (MessageList{plain[0], plain[5], plain[2000]}));
  EXPECT_EQ(part, SharedMessageList(MessageList{plain[0], plain[5], plain[2000]}));
  EXPECT_EQ(part.front(), plain[0]);
  EXPECT_EQ(part.indexOf(2000), 2U);
  EXPECT_EQ(part.indexOf(6), std::nullopt);
  EXPECT_EQ(SharedMessageList(plain).indexOf(6), 6U);
}

TEST(SharedMessageList, DifferencesAreFoundWhereMessagesWereReplaced) {
  const SharedMessageList before = messages(severalChunks);
  const auto after = before.replacing(3, other()).replacing(2000, other());
  EXPECT_EQ(SharedMessageList::differences(before, before, 0), Positions());
  EXPECT_EQ(SharedMessageList::differences(before, after, 2), (Positions{3, 2000}));
  EXPECT_EQ(SharedMessageList::differences(before, after, 1), std::nullopt);
  EXPECT_EQ(SharedMessageList::differences(before, messages(3), 10), std::nullopt);
}

TEST(SharedMessageList, DifferencesOfPartsAreTheirOwnPlaces) {
  const SharedMessageList before = messages(severalChunks);
  const auto after = before.replacing(3, other()).replacing(2000, other());
  const auto places = at({1, 2, 2000, 2001});
  EXPECT_EQ(SharedMessageList::differences(SharedMessageList::part(before, places),
                                           SharedMessageList::part(after, places), 5),
            Positions{2});
  EXPECT_EQ(SharedMessageList::differences(SharedMessageList::part(before, places),
                                           SharedMessageList::part(after, at({1})), 5),
            std::nullopt);
  EXPECT_EQ(SharedMessageList::part(before, at({1, 2})), SharedMessageList::part(after, at({1, 2})));
  EXPECT_NE(SharedMessageList::part(before, at({3})), SharedMessageList::part(after, at({3})));
}

}  // namespace
}  // namespace tidewrack
