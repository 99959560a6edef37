#include "screen/derived_state.h"

#include <map>
#include <random>

#include <gtest/gtest.h>

#include "platform/unicode.h"

namespace tidewrack {
namespace {

// -- The derived state as the words have it, message by message.

bool isAtOrBelow(const Text& label, const std::string& path) {
  if (isNoiseLabel(label) || matchingSystemMailbox(label) || matchingCategoryFolder(label)) {
    return false;
  }
  std::string text(trimWhitespaceAndNewlines(label));
  while (!text.empty() && (text.front() == '"' || text.front() == '\\')) {
    text.erase(0, 1);
  }
  while (!text.empty() && (text.back() == '"' || text.back() == '\\')) {
    text.pop_back();
  }
  return !text.empty() && (text == path || text.starts_with(path + "/"));
}

bool passesSidebar(const EmailMessage& message, const std::optional<SidebarSelection>& selection) {
  if (!selection) {
    return true;
  }
  if (const auto* chosen = selection->as<SidebarSelection::Library>()) {
    return message.sourceLibraryID == chosen->id;
  }
  if (const auto* chosen = selection->as<SidebarSelection::Category>()) {
    return message.category && *message.category == chosen->name;
  }
  if (selection->as<SidebarSelection::AllLibraries>() != nullptr) {
    return true;
  }
  return std::ranges::any_of(message.labels, [&](const Text& label) {
    if (const auto* chosen = selection->as<SidebarSelection::Mailbox>()) {
      return matchingSystemMailbox(label) == chosen->mailbox;
    }
    if (const auto* chosen = selection->as<SidebarSelection::GmailCategory>()) {
      return matchingCategoryFolder(label) == chosen->category;
    }
    return isAtOrBelow(label, selection->as<SidebarSelection::Label>()->path.string());
  });
}

MessageList expectedList(const DerivedInput& input) {
  const auto search = trimWhitespaceAndNewlines(input.searchText);
  const auto ids = input.searchIndex.matchingMessageIDs(search);
  MessageList kept;
  for (const auto& message : input.messages) {
    if (passesSidebar(*message, input.sidebarSelection) &&
        (!input.advancedFilters.isActive() || input.advancedFilters.matches(*message)) &&
        (search.empty() || ids.contains(message->id))) {
      kept.push_back(message);
    }
  }
  return kept;
}

void expectRight(const DerivedState& state, const DerivedInput& input) {
  EXPECT_TRUE(state.isComplete);
  ASSERT_TRUE(state.filteredMessages.get() == expectedList(input));
  MessageList scope;
  std::map<Text, std::int64_t> conversations;
  CategoryCounts categories;
  LibraryCounts libraries;
  const auto* library =
      input.sidebarSelection ? input.sidebarSelection->as<SidebarSelection::Library>() : nullptr;
  for (const auto& message : input.messages) {
    ++libraries[message->sourceLibraryID];
    if (library != nullptr && message->sourceLibraryID != library->id) {
      continue;
    }
    scope.push_back(message);
    ++conversations[message->conversationID];
    if (message->category && !message->category->empty()) {
      ++categories[*message->category];
    }
  }
  ASSERT_EQ(*state.counts.labelClassification, LabelClassification::classify(scope));
  for (const auto& message : input.messages) {
    ASSERT_EQ(state.counts.conversations->of(message->conversationID),
              conversations[message->conversationID]);
  }
  ASSERT_EQ(*state.counts.categories, categories);
  ASSERT_EQ(*state.countsByLibrary, libraries);
  ASSERT_TRUE(scopedMessages(input).get() == scope);
}

// -- Random messages and questions.

class Chance {
 public:
  explicit Chance(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool once(std::size_t in) { return below(in) == 0; }
  template <typename Value>
  const Value& of(const std::vector<Value>& values) {
    return values[below(values.size())];
  }

  std::vector<Text> labels() {
    static const std::vector<Text> all = {"Inbox",  "Recibidos", "Sent",          "Category Forums",
                                          "Work",   "Work/Done", "Work / Done",   "\"Work\"",
                                          "Unread", "\\Inbox",   "Holiday/a/b/c", ""};
    std::vector<Text> chosen;
    for (auto count = below(4); count > 0; --count) {
      chosen.push_back(of(all));
    }
    return chosen;
  }
  std::optional<Text> category() {
    static const std::vector<std::optional<Text>> all = {std::nullopt, "Travel", "Work", "Unheard of", ""};
    return of(all);
  }
  std::string words() {
    static const std::vector<std::string> all = {"apple", "pear", "plum", "fig"};
    return of(all) + " " + of(all);
  }
  // Ids repeat where there are more messages than `ids`.
  std::shared_ptr<const EmailMessage> message(std::size_t ids) {
    auto made = std::make_shared<EmailMessage>();
    made->id = "m" + std::to_string(below(ids));
    made->sourceLibraryID = "L" + std::to_string(below(3));
    made->conversationID = once(5) ? Text() : Text("C" + std::to_string(below(10)));
    made->subject = words();
    made->from.address = once(2) ? "ann@example.org" : "bob@example.org";
    made->labels = labels();
    made->category = category();
    if (!once(4)) {
      made->date = Date(std::chrono::days(below(10)));
    }
    if (once(2)) {
      made->plainBody = Content::ofBytes(words());
    }
    if (once(3)) {
      made->htmlBody = Content::ofBytes("<p>" + words());
    }
    if (once(2)) {
      static const std::vector<std::size_t> sizes = {9'999, 10'000, 100'000, 100'001};
      EmailAttachment attachment;
      attachment.fileName = once(2) ? "plan.pdf" : "photo.jpg";
      attachment.mimeType = "application/octet-stream";
      attachment.data = Content::ofBytes(std::string(of(sizes), 'x'));
      made->attachments.push_back(attachment);
    }
    return made;
  }
  MessageList messages(std::size_t count, std::size_t ids) {
    MessageList list;
    while (list.size() < count) {
      list.push_back(message(ids));
    }
    return list;
  }
  std::optional<SidebarSelection> selection() {
    switch (below(8)) {
      case 0:
        return std::nullopt;
      case 1:
        return SidebarSelection::library("L" + std::to_string(below(4)));
      case 2:
        return SidebarSelection::mailbox(allGmailSystemMailboxes[below(2)]);
      case 3:
        return SidebarSelection::gmailCategory(allGmailCategoryFolders[below(5)]);
      case 4:
        return SidebarSelection::label(of(std::vector<Text>{"Work", "Work/Done", "Holiday/a", "gone"}));
      case 5:
      case 6:
        return SidebarSelection::category(of(std::vector<Text>{"Travel", "Unheard of", "Finance", ""}));
      default:
        return SidebarSelection::allLibraries();
    }
  }
  SearchFilters filters() {
    SearchFilters filters;
    filters.subjectQuery = once(4) ? "APPLE" : "";
    filters.bodyQuery = once(4) ? "pear" : "";
    filters.fromQuery = once(5) ? "ann" : "";
    filters.useDateFilter = once(3);
    filters.startDate = Date(std::chrono::days(2));
    filters.endDate = Date(std::chrono::days(7));
    filters.attachmentFilter = static_cast<AttachmentFilter>(below(4) % 3);
    filters.attachmentType = once(3) ? "pdf" : "";
    filters.onlyInConversations = once(4);
    filters.onlyHTML = once(5);
    filters.sizeFilter = once(2) ? SizeFilter::any : static_cast<SizeFilter>(below(4));
    return filters;
  }

 private:
  std::mt19937 random_;
};

// One message exchanged for a version of it.
SharedMessageList withOneChange(const SharedMessageList& list, Chance& chance) {
  if (list.empty()) {
    return list;
  }
  const auto position = chance.below(list.size());
  auto changed = std::make_shared<EmailMessage>(*list[position]);
  switch (chance.below(8)) {
    case 0:
      changed->labels = chance.labels();
      break;
    case 1:
      changed->labels = {Text("new/" + std::to_string(chance.below(1000)))};
      break;
    case 2:
      changed->subject = chance.words();
      break;
    case 3:
      changed->conversationID = "elsewhere";
      break;
    case 4:
      changed->date.reset();
      break;
    default:
      changed->category = chance.category();
      break;
  }
  return list.replacing(position, std::move(changed));
}

void changeAtRandom(DerivedInput& input, Chance& chance, std::size_t most, std::size_t ids) {
  switch (chance.below(10)) {
    case 0:
      input.messages = chance.messages(chance.below(most), ids);
      break;
    case 1:
      input.sidebarSelection = chance.selection();
      break;
    case 2:
      input.advancedFilters = chance.filters();
      break;
    case 3:
      input.advancedFilters = SearchFilters();
      break;
    case 4:
      input.searchText = chance.of(std::vector<std::string>{"", " ", "apple", " plum fig ", "nothing", "x"});
      break;
    case 5:
      input.searchIndex.build(input.messages);
      input.indexedMessages = input.messages;
      break;
    case 6: {  // Two changes at once, one of them perhaps undone by the next step.
      input.messages = withOneChange(withOneChange(input.messages, chance), chance);
      break;
    }
    default:
      input.messages = withOneChange(input.messages, chance);
      break;
  }
}

void checkRandomChanges(unsigned seed, int rounds, std::size_t most, std::size_t ids) {
  Chance chance(seed);
  DerivedInput earlierInput;
  DerivedState earlier;
  DerivedInput input;
  input.messages = chance.messages(most, ids);
  for (int round = 0; round < rounds; ++round) {
    const DerivedState state = deriveState(input, earlierInput, earlier);
    expectRight(state, input);
    expectRight(deriveState(input), input);
    if (testing::Test::HasFatalFailure()) {
      return;
    }
    earlierInput = input;
    earlier = state;
    changeAtRandom(input, chance, most, ids);
  }
}

TEST(DerivedState, AnySequenceOfChangesGivesWhatARecomputationFromNothingGives) {
  checkRandomChanges(1, 1500, 40, 1'000'000);
}

TEST(DerivedState, MessagesOfOneIdAreCountedAndFilteredAsTheWordsSay) {
  checkRandomChanges(2, 1000, 30, 12);
}

TEST(DerivedState, ListsOfSeveralChunksAreTreatedAsShortOnes) {
  checkRandomChanges(3, 60, 3 * SharedMessageList::chunkSize + 5, 1'000'000);
}

// -- What is shared from one state to the next.

DerivedInput inputOf(std::size_t count) {
  Chance chance(4);
  DerivedInput input;
  MessageList messages;
  for (std::size_t i = 0; i < count; ++i) {
    auto message = std::make_shared<EmailMessage>(*chance.message(1'000'000));
    message->id = "m" + std::to_string(i);
    messages.push_back(message);
  }
  input.messages = std::move(messages);
  return input;
}

DerivedInput withCategory(const DerivedInput& input, std::size_t position, const char* category) {
  DerivedInput changed = input;
  auto message = std::make_shared<EmailMessage>(*input.messages[position]);
  message->category = category;
  changed.messages = input.messages.replacing(position, message);
  return changed;
}

TEST(DerivedState, AChangedCategoryTakesOverAllButTheCategoryCounts) {
  const DerivedInput input = inputOf(3000);
  const DerivedState state = deriveState(input);
  const DerivedInput changed = withCategory(input, 2000, "Finance");
  const DerivedState after = deriveState(changed, input, state);
  EXPECT_EQ(after.counts.labelClassification, state.counts.labelClassification);
  EXPECT_EQ(after.counts.conversations, state.counts.conversations);
  EXPECT_EQ(after.countsByLibrary, state.countsByLibrary);
  EXPECT_EQ(after.counts.categories->at("Finance"), 1);
  EXPECT_EQ(after.facts->chunks()[0], state.facts->chunks()[0]);
  EXPECT_NE(after.facts->chunks()[1], state.facts->chunks()[1]);
  EXPECT_EQ(&after.facts->labels(), &state.facts->labels());
  EXPECT_LE(derivationCost(changed, input, state), 1U);
}

TEST(DerivedState, AChangedLabelChangesTheCountsOfItsTreeAlone) {
  const DerivedInput input = inputOf(3000);
  const DerivedState state = deriveState(input);
  DerivedInput changed = input;
  auto message = std::make_shared<EmailMessage>(*input.messages[5]);
  message->labels = {"Work", "Brand/New"};
  changed.messages = input.messages.replacing(5, message);
  const DerivedState after = deriveState(changed, input, state);
  expectRight(after, changed);
  EXPECT_EQ(after.counts.conversations, state.counts.conversations);
  EXPECT_LE(derivationCost(changed, input, state), 1U);
}

TEST(DerivedState, AFilteredListOfTheSamePlacesSharesThem) {
  DerivedInput input = inputOf(3000);
  input.sidebarSelection = SidebarSelection::mailbox(GmailSystemMailbox::inbox);
  const DerivedState state = deriveState(input);
  ASSERT_NE(state.filteredMessages.positions(), nullptr);
  const DerivedState after = deriveState(withCategory(input, 7, "Finance"), input, state);
  EXPECT_EQ(after.filteredMessages.positions(), state.filteredMessages.positions());
}

TEST(DerivedState, WhatIsAskedOfFactsCostsOneLookAMessage) {
  const DerivedInput input = inputOf(3000);
  const DerivedState state = deriveState(input);
  DerivedInput selected = input;
  selected.sidebarSelection = SidebarSelection::label("Work");
  EXPECT_EQ(derivationCost(selected, input, state), 3000U);
  selected.advancedFilters.bodyQuery = "pear";
  EXPECT_GT(derivationCost(selected, input, state), 1'000'000U);
  // Once the bodies have been read, they count no more.
  const DerivedState read = deriveState(selected, input, state);
  DerivedInput searched = selected;
  searched.sidebarSelection.reset();
  const DerivedState all = deriveState(searched, selected, read);
  selected.searchText = "apple";
  EXPECT_LE(derivationCost(selected, searched, all), 3000U);
}

TEST(DerivedState, ACancelledDerivationKeepsWhatItHasRead) {
  DerivedInput input = inputOf(100);
  input.advancedFilters.bodyQuery = "pear";
  const std::atomic<bool> cancelled = true;
  const DerivedState state = deriveState(input, DerivedInput(), DerivedState(), &cancelled);
  EXPECT_FALSE(state.isComplete);
  ASSERT_NE(state.textOutcomes, nullptr);
  EXPECT_EQ(state.textOutcomes->unknownCount, 100U);
  expectRight(deriveState(input, input, state), input);
}

// -- Edge cases of the single steps.

MessageList labelled(const std::vector<std::vector<Text>>& labels) {
  MessageList list;
  for (const auto& own : labels) {
    auto message = std::make_shared<EmailMessage>();
    message->id = "m" + std::to_string(list.size());
    message->labels = own;
    list.push_back(message);
  }
  return list;
}

std::size_t shown(const MessageList& messages, std::optional<SidebarSelection> selection) {
  DerivedInput input;
  input.messages = messages;
  input.sidebarSelection = std::move(selection);
  return deriveState(input).filteredMessages.size();
}

TEST(DerivedState, ALabelInQuotesIsFoundByItsPath) {
  EXPECT_EQ(shown(labelled({{"\"Work\""}}), SidebarSelection::label("Work")), 1U);
}

TEST(DerivedState, ALabelWithBlanksAroundItsSlashLiesInTheTreeButIsNotFoundByItsPath) {
  const auto messages = labelled({{"Work / Done"}});
  EXPECT_EQ(LabelClassification::classify(messages).userLabelTree.at(0).children.at(0).path, "Work/Done");
  EXPECT_EQ(shown(messages, SidebarSelection::label("Work/Done")), 0U);
}

TEST(DerivedState, TheMailboxImportantFindsAGermanLabel) {
  EXPECT_EQ(
      shown(labelled({{"Wichtig"}, {"Inbox"}}), SidebarSelection::mailbox(GmailSystemMailbox::important)),
      1U);
}

TEST(DerivedState, WithNoSelectionAllMessagesAreInScope) {
  EXPECT_EQ(shown(labelled({{}, {"Inbox"}, {"Work"}}), std::nullopt), 3U);
}

TEST(DerivedState, AQueryOfOneLetterEmptiesTheList) {
  DerivedInput input;
  input.messages = labelled({{"x"}, {"Inbox"}});
  input.searchIndex.build(input.messages);
  input.indexedMessages = input.messages;
  input.searchText = "x";
  EXPECT_TRUE(deriveState(input).filteredMessages.empty());
}

TEST(DerivedState, ASelectedMailboxWithoutMessagesYieldsAnEmptyList) {
  EXPECT_EQ(shown(labelled({{"Work"}}), SidebarSelection::mailbox(GmailSystemMailbox::trash)), 0U);
}

}  // namespace
}  // namespace tidewrack
