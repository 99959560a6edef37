#include "reading/icons.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "classify/gmail_labels.h"

namespace tidewrack {
namespace {

TEST(Icons, ASymbolNameGivesItsBundledIcon) {
  EXPECT_EQ(iconName("tray.fill"), "tw-inbox-fill-symbolic");
  EXPECT_EQ(iconName("paperclip"), "tw-paperclip-symbolic");
}

TEST(Icons, AnUnknownNameGivesAQuestionMark) {
  EXPECT_EQ(iconName("no.such.symbol"), "tw-question-circle-symbolic");
  EXPECT_EQ(iconName(""), "tw-question-circle-symbolic");
}

TEST(Icons, EverySymbolIsKnownOnceAndHasAnIconOfItsOwn) {
  const auto symbols = knownSymbols();
  EXPECT_GT(symbols.size(), 100U);
  EXPECT_TRUE(std::ranges::is_sorted(symbols));
  std::set<std::string> icons;
  for (const auto symbol : symbols) {
    EXPECT_TRUE(icons.insert(iconName(symbol)).second) << symbol << " shares its icon";
  }
}

TEST(Icons, EveryMailboxAndTabHasOne) {
  const auto symbols = knownSymbols();
  for (const auto mailbox : allGmailSystemMailboxes) {
    EXPECT_TRUE(std::ranges::binary_search(symbols, appearance(mailbox).icon)) << appearance(mailbox).icon;
  }
  for (const auto folder : allGmailCategoryFolders) {
    EXPECT_TRUE(std::ranges::binary_search(symbols, appearance(folder).icon)) << appearance(folder).icon;
  }
}

TEST(Icons, EveryStatusHasADistinctOne) {
  std::set<std::string> icons;
  for (const auto* symbol :
       {"arrow.down.doc", "tray.full", "icloud.and.arrow.down", "checkmark.circle.fill",
        "checkmark.icloud.fill", "magnifyingglass.circle.fill", "trash", "exclamationmark.triangle.fill"}) {
    icons.insert(iconName(symbol));
  }
  EXPECT_EQ(icons.size(), 8U);
  EXPECT_FALSE(icons.contains(iconName("")));
}

}  // namespace
}  // namespace tidewrack
