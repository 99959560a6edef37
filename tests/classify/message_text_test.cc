#include "classify/message_text.h"

#include <random>

#include <gtest/gtest.h>

#include "classify/full_text_search_index.h"
#include "mail/html_text.h"

namespace tidewrack {
namespace {

std::vector<std::string> wordsOfBlanked(std::string html) {
  const auto size = html.size();
  HTMLTextExtractor::blankMarkup(html);
  EXPECT_EQ(html.size(), size);
  return FullTextSearchIndex::tokenize(html);
}

TEST(MessageText, TheWordsOfAnHTMLBodyAreThoseOfItsVisibleText) {
  const std::vector<std::string> pieces = {"<",
                                           ">",
                                           "&",
                                           ";",
                                           "/",
                                           "!--",
                                           "-->",
                                           "<p>",
                                           "</p>",
                                           "<br/>",
                                           "<a href=\"",
                                           "\">",
                                           "<script",
                                           "<style",
                                           "script",
                                           "style>",
                                           "</scr",
                                           "ipt>",
                                           "</style>",
                                           "</script>",
                                           "&nbsp;",
                                           "&amp;",
                                           "&lt;",
                                           "&gt;",
                                           "&amplt;",
                                           "lt;",
                                           "gt;",
                                           "&eacute;",
                                           "amp;",
                                           "word",
                                           "ΟΔΟΣ",
                                           "é",
                                           "e",
                                           "\u0301",
                                           "の文",
                                           "b",
                                           " ",
                                           "\n",
                                           "\u00A0",
                                           "\u3000",
                                           "'",
                                           ".",
                                           "Σ",
                                           "<sTyLe>",
                                           "a",
                                           "<\u017Fcript>",
                                           "&amp;lt;b&gt;",
                                           "<>",
                                           "x<y",
                                           "🎉",
                                           "-",
                                           "7"};
  std::mt19937 random(5);
  for (int round = 0; round < 20'000; ++round) {
    std::string html;
    for (auto count = random() % 40; count > 0; --count) {
      html += pieces[random() % pieces.size()];
    }
    ASSERT_EQ(wordsOfBlanked(html), FullTextSearchIndex::tokenize(HTMLTextExtractor::extractText(html)))
        << html;
  }
}

}  // namespace
}  // namespace tidewrack
