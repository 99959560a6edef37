#include "classify/full_text_search_index.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "classify/token_segment.h"
#include "platform/alphanumerics.h"
#include "platform/normalization.h"
#include "platform/unicode.h"
#include "platform/utf8.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::shared_ptr<const EmailMessage> message(const char* id, const char* body) {
  auto message = std::make_shared<EmailMessage>();
  message->id = id;
  message->plainBody = Content::ofBytes(body);
  message->from.address = "ana@example.org";
  return message;
}

FullTextSearchIndex indexOf(const MessageList& messages) {
  FullTextSearchIndex index;
  index.build(messages);
  return index;
}

TEST(Tokenize, FoldsDropsSingleCharactersAndSplitsAtPunctuation) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("José-María, J. Mail"), ElementsAre("jose", "maria", "mail"));
}

TEST(Tokenize, KeepsRepeats) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("ab AB"), ElementsAre("ab", "ab"));
}

TEST(Tokenize, LatinLosesItsAccentsAndKeepsLettersOfItsOwn) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("Łódź naïve Straße Ærø E\u0301te\u0301"),
              ElementsAre("łodz", "naive", "straße", "ærø", "ete"));
}

TEST(Tokenize, GreekLosesItsAccentsAndItsSigmaFollowsTheWord) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("Ελλάδα, ΟΔΌΣ· Σίσυφος"),
              ElementsAre("ελλαδα", "οδος", "σισυφος"));
}

TEST(Tokenize, CyrillicLosesItsDiacritics) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("Привет, МИР! Ёлка и йод"),
              ElementsAre("привет", "мир", "елка", "иод"));
}

TEST(Tokenize, ArabicKeepsItsVowelMarks) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("السلام عليكم، مَرْحَبًا و"),
              ElementsAre("السلام", "عليكم", "مَرْحَبًا"));
}

TEST(Tokenize, DevanagariKeepsItsMarksAndDropsOneSyllable) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("नमस्ते दुनिया। कि"), ElementsAre("नमस्ते", "दुनिया"));
}

TEST(Tokenize, ThaiIsOneWordUpToABlankAndDropsOneCharacter) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("สวัสดี ทำงาน น้ำ"), ElementsAre("สวัสดี", "ทำงาน"));
}

TEST(Tokenize, HanDropsASingleIdeograph) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("漢字 字，𠮷野家"), ElementsAre("漢字", "𠮷野家"));
}

TEST(Tokenize, KanaKeepsItsVoicedMarks) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("ひらがな、カタカナ・ガ ﾊﾟﾝ"),
              ElementsAre("ひらがな", "カタカナ", "ﾊﾟﾝ"));
}

TEST(Tokenize, HangulDropsASingleSyllableComposedOrNot) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("한국어 글 \u1112\u1161\u11AB \u1112\u1161\u11AB글"),
              ElementsAre("한국어", "한글"));
}

TEST(Tokenize, EquivalentSpellingsOfAWordAreOneToken) {
  const std::vector<std::pair<const char*, const char*>> spellings = {
      {"회의록", "\u1112\u116C\u110B\u1174\u1105\u1169\u11A8"},
      {"ガス", "カ\u3099ス"},
      {"\u095Bरा", "\u091C\u093Cरा"},
      {"\uF900漢", "\u8C48漢"},
      {"שׁלום", "\uFB2Aלום"}};
  for (const auto& [one, other] : spellings) {
    EXPECT_EQ(FullTextSearchIndex::tokenize(one), FullTextSearchIndex::tokenize(other)) << one;
    EXPECT_THAT(FullTextSearchIndex::tokenize(one), testing::SizeIs(1)) << one;
  }
  EXPECT_THAT(FullTextSearchIndex::tokenize("\u1112\u116C\u110B\u1174"), ElementsAre("회의"));
}

TEST(Tokenize, EmojiSeparateAndAreNoWords) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("ok🎉🎉then 👩‍👩‍👧 ❤️ 1️⃣ 🇪🇸 ok2"),
              ElementsAre("ok", "then", "ok2"));
}

TEST(Tokenize, AFullStopDoesNotHideTheFormOfASigma) {
  EXPECT_THAT(FullTextSearchIndex::tokenize("ΟΔΟΣ"), ElementsAre("οδος"));
  EXPECT_THAT(FullTextSearchIndex::tokenize("ΟΔΟΣ ΑΒ"), ElementsAre("οδος", "αβ"));
}

/// The rules as they read: fold, lower case, split, drop.
std::vector<std::string> plainTokens(std::string_view text) {
  std::vector<std::string> tokens;
  const std::string folded = lowercase(foldDiacritics(text));
  for (std::size_t at = 0; at < folded.size();) {
    const auto word = nextAlphanumericRun(folded, at);
    if (graphemeCount(word) > 1) {
      tokens.push_back(canonicallyComposed(word));
    }
  }
  return tokens;
}

TEST(Tokenize, TreatsEveryCharacterAsThePlainRulesDo) {
  for (char32_t character = 0x80; character < 0x20000; ++character) {
    if (character >= 0xD800 && character < 0xE000) {
      continue;
    }
    std::string text;
    appendCharacter(text, character);
    const auto one = text;
    // Between letters, alone, twice, with a mark, behind a letter that takes marks and one that does not.
    text = "ab" + one + "cd " + one + " " + one + one + " " + one + "\u0301" + one + " \u00E9" + one +
           " \u0628" + one + " 1" + one + "." + one;
    ASSERT_EQ(FullTextSearchIndex::tokenize(text), plainTokens(text)) << std::hex << std::uint32_t{character};
  }
}

TEST(Tokenize, EqualsThePlainRulesForAnyText) {
  const std::vector<std::string> pieces = {"a",
                                           "B",
                                           "word",
                                           "Other",
                                           "7",
                                           "2026",
                                           " ",
                                           "  ",
                                           ".",
                                           "'",
                                           ":",
                                           "-",
                                           "@",
                                           "\n",
                                           "é",
                                           "É",
                                           "e\u0301",
                                           "ß",
                                           "Σ",
                                           "ΟΔΟΣ",
                                           "ος",
                                           "й",
                                           "İ",
                                           "ı",
                                           "漢",
                                           "字",
                                           "か",
                                           "が",
                                           "ガ",
                                           "한",
                                           "국",
                                           "ق",
                                           "نِ",
                                           "न",
                                           "मस्ते",
                                           "ส",
                                           "วัส",
                                           "🎉",
                                           "👩‍👩‍👧",
                                           "\u0301",
                                           "\u00AD",
                                           "\u200D",
                                           "½",
                                           "①",
                                           "_",
                                           "longwordthatgoesonandonandonandonandonandonandonandonandon"};
  std::mt19937 random(17);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    for (auto count = random() % 60; count > 0; --count) {
      text += pieces[random() % (round % 2 == 0 ? 12 : pieces.size())];
    }
    ASSERT_EQ(FullTextSearchIndex::tokenize(text), plainTokens(text)) << text;
  }
}

TEST(FullTextSearchIndex, AQueryOfOneLetterFindsNothingAndOfTwoTheToken) {
  const auto index = indexOf({message("1", "a ab")});
  EXPECT_THAT(index.matchingMessageIDs("a"), IsEmpty());
  EXPECT_THAT(index.matchingMessageIDs("ab"), UnorderedElementsAre(Text("1")));
}

TEST(FullTextSearchIndex, AccentsAndCaseDoNotMatter) {
  const auto index =
      indexOf({message("1", "cafe"), message("2", "CAFÉ"), message("3", "café"), message("4", "tea")});
  EXPECT_THAT(index.matchingMessageIDs("Café"), UnorderedElementsAre(Text("1"), Text("2"), Text("3")));
}

TEST(FullTextSearchIndex, EveryTokenOfTheQueryIsRequired) {
  const auto index = indexOf({message("1", "foo bar"), message("2", "foo"), message("3", "bar")});
  EXPECT_THAT(index.matchingMessageIDs("foo bar"), UnorderedElementsAre(Text("1")));
  EXPECT_THAT(index.matchingMessageIDs("foo-bar"), UnorderedElementsAre(Text("1")));
}

TEST(FullTextSearchIndex, OneUnknownTokenAmongKnownOnesFindsNothing) {
  EXPECT_THAT(indexOf({message("1", "foo bar")}).matchingMessageIDs("foo unknown bar"), IsEmpty());
}

TEST(FullTextSearchIndex, AWholeAddressFindsMessagesThatHoldItsTokensAnywhere) {
  const auto from = [](const char* id, const char* address, const char* body) {
    auto made = std::make_shared<EmailMessage>(*message(id, body));
    made->from.address = address;
    return made;
  };
  const auto index =
      indexOf({from("1", "ana@example.org", "nothing"), from("2", "bob@net", "org. Ana, an example"),
               from("3", "ana@example", "nothing"), from("4", "org@net", "for example")});
  EXPECT_THAT(index.matchingMessageIDs("ana@example.org"), UnorderedElementsAre(Text("1"), Text("2")));
}

TEST(FullTextSearchIndex, MessagesOfOneIDAreFoundByWordsThatTheyHoldBetweenThem) {
  auto index = indexOf({message("1", "lighthouse"), message("1", "harbour"), message("2", "harbour")});
  EXPECT_THAT(index.matchingMessageIDs("lighthouse harbour"), UnorderedElementsAre(Text("1")));
  EXPECT_THAT(index.matchingMessageIDs("harbour"), UnorderedElementsAre(Text("1"), Text("2")));
  index.load(index.entries());
  EXPECT_THAT(index.matchingMessageIDs("lighthouse harbour"), UnorderedElementsAre(Text("1")));
}

TEST(FullTextSearchIndex, AnEmptyIndexFindsNothing) {
  EXPECT_THAT(FullTextSearchIndex().matchingMessageIDs("foo"), IsEmpty());
  EXPECT_TRUE(FullTextSearchIndex().empty());
}

TEST(FullTextSearchIndex, AMessageWithoutTextIsFoundByThePartsOfItsSenderAndByLabel) {
  auto bare = std::make_shared<EmailMessage>();
  bare->id = "1";
  bare->from = {Text("Ana Ruiz"), "ana@example.org"};
  bare->labels = {"Inbox"};
  const auto index = indexOf({bare});
  for (const auto* query : {"ruiz", "ana", "example", "org", "ana@example.org"}) {
    EXPECT_THAT(index.matchingMessageIDs(query), UnorderedElementsAre(Text("1"))) << query;
  }
  EXPECT_THAT(index.matchingMessageIDs("inbox"), UnorderedElementsAre(Text("1")));
  EXPECT_THAT(index.matchingMessageIDs("recibidos"), IsEmpty());
}

TEST(FullTextSearchIndex, RecipientsAreFoundAndNamesOfAttachmentsAreNot) {
  auto made = std::make_shared<EmailMessage>(*message("1", "body"));
  made->to = {{Text("Tomás"), "to@example.org"}};
  made->cc = {{std::nullopt, "carla@copy.example"}};
  made->snippet = "a snippet that was cut in a wo";
  made->attachments.emplace_back().fileName = "picture.png";
  const auto index = indexOf({made});
  for (const auto* query : {"tomas", "carla", "copy", "wo"}) {
    EXPECT_THAT(index.matchingMessageIDs(query), UnorderedElementsAre(Text("1"))) << query;
  }
  EXPECT_THAT(index.matchingMessageIDs("picture"), IsEmpty());
}

TEST(FullTextSearchIndex, ThereIsNoPrefixMatching) {
  EXPECT_THAT(indexOf({message("1", "invoice")}).matchingMessageIDs("inv"), IsEmpty());
}

TEST(FullTextSearchIndex, TheVisibleTextOfHTMLIsFoundAndItsMarkupIsNot) {
  auto html = std::make_shared<EmailMessage>();
  html->id = "1";
  html->htmlBody = Content::ofBytes("<div class=\"wide\">Grüße<br>aus Wien</div>");
  const auto index = indexOf({html});
  EXPECT_THAT(index.matchingMessageIDs("grusse"), IsEmpty());
  EXPECT_THAT(index.matchingMessageIDs("wien"), UnorderedElementsAre(Text("1")));
  EXPECT_THAT(index.matchingMessageIDs("wide"), IsEmpty());
}

TEST(FullTextSearchIndex, HoldsExactlyTheWordsOfEachOfManyMessages) {
  std::mt19937 random(3);
  std::set<std::pair<std::string, std::string>> expected;
  MessageList messages;
  constexpr int count = 9000;
  for (int i = 0; i < count; ++i) {
    const auto id = std::to_string(i);
    // Words of nearly all messages, of many and of one, with great and small distances.
    std::string body = i % 97 == 0 ? "" : "common ";
    body += "word" + std::to_string(random() % 50) + " word" + std::to_string(random() % 50);
    body += i % 3000 == 1 ? " distant" : "";
    body += " own" + id + " averyveryverylongwordof" + std::to_string(random() % 4);
    body += random() % 2 == 0 ? " sixteencharacter" : " sixteencharacters";
    messages.push_back(message(id.c_str(), body.c_str()));
    for (const auto& token : plainTokens(body + " ana@example.org")) {
      expected.emplace(token, id);
    }
  }
  const auto index = indexOf(messages);
  std::set<std::pair<std::string, std::string>> found;
  for (const auto& entry : index.entries()) {
    EXPECT_TRUE(found.emplace(entry.token.string(), entry.messageID.string()).second);
  }
  EXPECT_EQ(found, expected);
  EXPECT_EQ(index.pairCount(), expected.size());
}

TEST(FullTextSearchIndex, EntriesLoadBackToTheSameIndex) {
  MessageList messages;
  for (int i = 0; i < 600; ++i) {
    const auto id = std::to_string(i);
    messages.push_back(message(id.c_str(), ("word" + std::to_string(i % 7) + " common").c_str()));
  }
  const auto built = indexOf(messages);
  FullTextSearchIndex loaded;
  loaded.load(built.entries());
  EXPECT_EQ(built.entries().size(), loaded.entries().size());
  for (const auto* query : {"common", "word3", "word3 common", "word9"}) {
    EXPECT_EQ(built.matchingMessageIDs(query), loaded.matchingMessageIDs(query)) << query;
  }
  EXPECT_EQ(built.matchingMessageIDs("word3").size(), 86U);
}

std::vector<std::pair<std::string, std::string>> sortedEntries(const FullTextSearchIndex& index) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const auto& entry : index.entries()) {
    pairs.emplace_back(entry.token.string(), entry.messageID.string());
  }
  std::ranges::sort(pairs);
  return pairs;
}

TEST(FullTextSearchIndex, AnUpdateEndsAsAFullBuildWhateverHasChanged) {
  std::mt19937 random(7);
  MessageList messages;
  FullTextSearchIndex updated;
  int nextID = 0;
  for (int round = 0; round < 60; ++round) {
    for (int change = 0; change < 12; ++change) {
      const auto kind = random() % 4;
      if (kind == 0 || messages.empty()) {
        const auto id = std::to_string(nextID++);
        const auto body =
            "word" + std::to_string(random() % 9) + " common token" + std::to_string(random() % 40);
        messages.insert(messages.begin() + static_cast<long>(random() % (messages.size() + 1)),
                        message(id.c_str(), body.c_str()));
      } else if (kind == 1) {
        messages.erase(messages.begin() + static_cast<long>(random() % messages.size()));
      } else if (kind == 2) {
        auto& place = messages[random() % messages.size()];
        place = message(place->id.string().c_str(), ("other" + std::to_string(random() % 5)).c_str());
      } else {
        auto& place = messages[random() % messages.size()];
        auto copy = std::make_shared<EmailMessage>(*place);
        copy->category = Text("Work");
        place = copy;
      }
    }
    updated.update(messages);
    const auto built = indexOf(messages);
    ASSERT_EQ(sortedEntries(updated), sortedEntries(built)) << "round " << round;
    for (const auto* query : {"common", "word3", "word3 common", "other1", "ana"}) {
      ASSERT_EQ(updated.positionsMatching(query), built.positionsMatching(query)) << query;
    }
  }
}

/// A body that counts how often it is read.
class CountedBody final : public ContentSource {
 public:
  [[nodiscard]] std::string bytes() const override {
    ++reads;
    return "counted words";
  }
  [[nodiscard]] std::uint64_t size() const override { return 13; }
  mutable int reads = 0;
};

TEST(FullTextSearchIndex, AnUpdateReadsOnlyWhatIsNewOrHasChangedItsText) {
  const auto body = std::make_shared<CountedBody>();
  auto first = std::make_shared<EmailMessage>();
  first->id = "1";
  first->plainBody = Content(body);
  FullTextSearchIndex index;
  index.build({first});
  EXPECT_EQ(body->reads, 1);
  auto categorised = std::make_shared<EmailMessage>(*first);
  categorised->category = Text("Work");
  index.update({message("2", "new"), categorised});
  EXPECT_EQ(body->reads, 1);
  EXPECT_THAT(index.positionsMatching("counted"), ElementsAre(1U));
  EXPECT_THAT(index.positionsMatching("new"), ElementsAre(0U));
}

TEST(FullTextSearchIndex, AnUpdateDoesNotReadWhatWasCollectedBefore) {
  const auto body = std::make_shared<CountedBody>();
  auto first = std::make_shared<EmailMessage>();
  first->id = "1";
  first->plainBody = Content(body);
  const MessageList saved = {first, message("2", "other")};
  FullTextSearchIndex index;
  index.update({saved[1], saved[0]}, CollectedWords::ofSaved(TokenSegment::build(saved), saved));
  EXPECT_EQ(body->reads, 1);
  EXPECT_THAT(index.positionsMatching("counted"), ElementsAre(1U));
  EXPECT_THAT(index.positionsMatching("other"), ElementsAre(0U));
}

TEST(FullTextSearchIndex, CollectedWordsOfAListThatDoesNotBelongToThemAreNotUsed) {
  const MessageList collectedFrom = {message("1", "one"), message("2", "two")};
  EXPECT_EQ(CollectedWords::ofSaved(TokenSegment::build(collectedFrom), {collectedFrom[0]}).segment, nullptr);
  // The same ids with other texts.
  const auto collected = CollectedWords::ofSaved(TokenSegment::build(collectedFrom), collectedFrom);
  FullTextSearchIndex index;
  index.update({message("1", "uno"), message("3", "tres")}, collected);
  EXPECT_THAT(index.positionsMatching("one"), IsEmpty());
  EXPECT_THAT(index.positionsMatching("uno"), ElementsAre(0U));
  EXPECT_EQ(index.messageCount(), 2U);
}

TEST(FullTextSearchIndex, AnUpdateWithCollectedWordsEndsAsAFullBuild) {
  std::mt19937 random(11);
  std::map<std::string, std::shared_ptr<const EmailMessage>> byID;
  FullTextSearchIndex updated;
  for (int round = 0; round < 40; ++round) {
    // Each save brings new messages, earlier ones with other texts, and some ids twice.
    MessageList saved;
    for (int i = 0; i < 30; ++i) {
      const auto id = std::to_string(random() % 300);
      const auto body = "word" + std::to_string(random() % 9) + " common" + std::to_string(random() % 3);
      saved.push_back(message(id.c_str(), body.c_str()));
      byID[id.c_str()] = saved.back();
    }
    MessageList written;
    for (auto& place : saved) {
      const bool isReplaced = std::exchange(place, byID[place->id.string()]) != place;
      if (!isReplaced) {
        written.push_back(place);
      }
    }
    const auto collected = CollectedWords::ofSaved(TokenSegment::build(written), saved);
    ASSERT_EQ(collected.messages, written);
    MessageList messages;
    for (const auto& [id, each] : byID) {
      messages.push_back(each);
    }
    std::ranges::shuffle(messages, random);
    updated.update(messages, collected);
    const auto built = indexOf(messages);
    ASSERT_EQ(sortedEntries(updated), sortedEntries(built)) << "round " << round;
    ASSERT_EQ(updated.messageCount(), messages.size());
    for (const auto* query : {"common1", "word3", "word3 common2", "ana"}) {
      ASSERT_EQ(updated.positionsMatching(query), built.positionsMatching(query)) << query;
    }
  }
}

TEST(FullTextSearchIndex, PlacesComeInOrderFromManyAndFewMessagesInAnyOrder) {
  std::mt19937 random(5);
  MessageList messages;
  for (int i = 0; i < 5000; ++i) {
    const std::string body =
        std::string("common") + (i % 1000 == 7 ? " rare" : "") + (i % 2 == 0 ? " even" : "");
    messages.push_back(message(std::to_string(i).c_str(), body.c_str()));
  }
  const auto collected = CollectedWords::ofSaved(TokenSegment::build(messages), messages);
  std::ranges::shuffle(messages, random);
  FullTextSearchIndex index;
  index.update(messages, collected);
  for (const auto* query : {"common", "rare", "even"}) {
    std::vector<std::uint32_t> expected;
    for (std::uint32_t place = 0; place < messages.size(); ++place) {
      if (messages[place]->plainBody->bytes().find(query) != std::string::npos) {
        expected.push_back(place);
      }
    }
    EXPECT_EQ(index.positionsMatching(query), expected) << query;
  }
}

TEST(FullTextSearchIndex, LoadedEntriesFindTheirPlacesInAList) {
  FullTextSearchIndex index;
  index.load({{"alpha", "b"}, {"alpha", "a"}, {"beta", "a"}, {"alpha", "gone"}});
  index.align({message("a", ""), message("x", ""), message("b", "")});
  EXPECT_THAT(index.positionsMatching("alpha"), ElementsAre(0U, 2U));
  EXPECT_THAT(index.positionsMatching("alpha beta"), ElementsAre(0U));
}

}  // namespace
}  // namespace tidewrack
