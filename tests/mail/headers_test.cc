#include "mail/headers.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mail/html_text.h"
#include "mail/text_pool.h"
#include "platform/unicode.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- Header blocks

TEST(ParseHeaders, ASubjectHeaderGivenTwiceYieldsTheSecondValue) {
  EXPECT_EQ(parseHeaders("Subject: one\nX: y\nsubject: two").at("subject"), "two");
}

TEST(ParseHeaders, AFoldedSubjectIsJoinedWithOneBlank) {
  EXPECT_EQ(parseHeaders("Subject: one  \n \t two\t\n").at("subject"), "one two");
}

TEST(ParseHeaders, AHeaderValueContinuingAfterAJunkLineWithoutAColonStillJoinsThePreviousHeader) {
  EXPECT_EQ(parseHeaders("Subject: one\njunk\n two").at("subject"), "one two");
}

TEST(ParseHeaders, AContinuationGoesToTheHeaderBeforeItAlsoBehindAnEmptyLine) {
  EXPECT_EQ(parseHeaders("a: 1\n\n 2").at("a"), "1 2");
}

TEST(ParseHeaders, AContinuationBeforeAnyHeaderIsDropped) {
  EXPECT_THAT(parseHeaders(" folded\na: 1"), ElementsAre(std::pair("a", "1")));
}

TEST(ParseHeaders, AnEmptyValueThatContinuesKeepsTheBlankOfTheJoin) {
  EXPECT_EQ(parseHeaders("Subject:\n text").at("subject"), " text");
  EXPECT_EQ(parseHeaders("Subject: text\n  ").at("subject"), "text ");
}

TEST(ParseHeaders, ALaterOccurrenceTakesItsContinuationsWithIt) {
  EXPECT_EQ(parseHeaders("a: 1\n 2\na: 3").at("a"), "3");
}

TEST(ParseHeaders, NamesAreTrimmedAndInLowerCaseAlsoBeyondASCII) {
  EXPECT_THAT(parseHeaders("\u00A0X-\u00C4 : v\n: nameless"),
              ElementsAre(std::pair("", "nameless"), std::pair("x-\u00E4", "v")));
}

TEST(ParseHeaders, AValueMayHoldColons) {
  EXPECT_EQ(parseHeaders("a: b: c").at("a"), "b: c");
}

TEST(ParseHeaders, AllLineEndsEndLines) {
  EXPECT_THAT(parseHeaders("a: 1\rb: 2\r\nc: 3\r\n 4"),
              ElementsAre(std::pair("a", "1"), std::pair("b", "2"), std::pair("c", "3 4")));
}

TEST(ParseHeaders, NoHeadersGiveAnEmptyMap) {
  EXPECT_THAT(parseHeaders(""), IsEmpty());
  EXPECT_THAT(parseHeaders("\n\njunk\n"), IsEmpty());
}

// ---- Parameters

TEST(HeaderParameter, TheNameIsFoundInAnyCaseAndTheCaseOfTheValueIsKept) {
  EXPECT_EQ(headerParameter("charset", "text/plain; CharSet=UTF-8; x=y"), "UTF-8");
  EXPECT_EQ(headerParameter("CHARSET", "text/plain;charset=utf-8"), "utf-8");
}

TEST(HeaderParameter, QuotesAndBlanksGoFromBothEnds) {
  EXPECT_EQ(headerParameter("name", "x; name=\" 'a b.png' \""), "a b.png");
}

TEST(HeaderParameter, QuotesDoNotProtectASemicolon) {
  EXPECT_EQ(headerParameter("name", "x; name=\"a;b.png\""), "a");
}

TEST(HeaderParameter, AValueMayHoldAnEqualsSign) {
  EXPECT_EQ(headerParameter("boundary", "x; boundary=a=b=="), "a=b==");
  EXPECT_EQ(headerParameter("boundary", "x; boundary==a"), "=a");
}

TEST(HeaderParameter, APieceWithNothingBehindTheEqualsSignGivesItsOwnName) {
  EXPECT_EQ(headerParameter("charset", "text/plain; Charset="), "Charset");
  EXPECT_EQ(headerParameter("charset", "text/plain; charset=\"\""), "");
}

TEST(HeaderParameter, TheFirstMatchCounts) {
  EXPECT_EQ(headerParameter("a", "x; a=1; a=2"), "1");
}

TEST(HeaderParameter, TheExtendedFormIsNotUnderstood) {
  EXPECT_EQ(headerParameter("filename", "attachment; filename*=utf-8''a.txt"), std::nullopt);
}

TEST(HeaderParameter, ABlankBeforeTheEqualsSignIsNoMatch) {
  EXPECT_EQ(headerParameter("charset", "text/plain; charset =utf-8"), std::nullopt);
}

TEST(HeaderParameter, TheValueItselfMayBeTheMatch) {
  EXPECT_EQ(headerParameter("a", "a=b"), "b");
}

TEST(HeaderParameter, NamesBeyondASCIIAreComparedInLowerCase) {
  EXPECT_EQ(headerParameter("\u00E4", "x; \u00C4=1"), "1");
  EXPECT_EQ(headerParameter("k", "x; \u212A=1"), "1");
}

// ---- Mailboxes

TEST(ParseSender, AnAbsentOrBlankValueGivesNothing) {
  EXPECT_EQ(parseSender(std::nullopt), std::nullopt);
  EXPECT_EQ(parseSender(" \t"), std::nullopt);
}

TEST(ParseSender, TwoPlainWordsWithoutBracketsGiveAnAddressOfThoseTwoWordsAndNoName) {
  EXPECT_EQ(parseSender("Ada Lovelace"), (EmailAddress{std::nullopt, "Ada Lovelace"}));
}

TEST(ParseSender, TheNameLosesItsQuotesAndTheAddressItsBlanks) {
  EXPECT_EQ(parseSender("\"Ada \" < ada@example.org >"), (EmailAddress{"Ada", "ada@example.org"}));
}

TEST(ParseSender, AnEmptyPairOfBracketsGivesAnEmptyAddress) {
  EXPECT_EQ(parseSender("Ada <>"), (EmailAddress{"Ada", ""}));
}

TEST(ParseSender, BracketsInTheWrongOrderAreText) {
  EXPECT_EQ(parseSender("a> <b"), (EmailAddress{std::nullopt, "a> <b"}));
}

TEST(ParseSender, TheSearchHappensOnDecodedText) {
  EXPECT_EQ(parseSender("=?utf-8?q?Ad=C3=A9_=3Ca=40b=3E?="), (EmailAddress{"Ad\u00E9", "a@b"}));
}

TEST(ParseSender, ANameOfNothingButQuotesIsAbsent) {
  EXPECT_EQ(parseSender("\"\" <a@b>"), (EmailAddress{std::nullopt, "a@b"}));
}

TEST(ParseAddressList, EveryCommaSeparatesAlsoWithinQuotes) {
  EXPECT_THAT(parseAddressList("\"Lovelace, Ada\" <a@b>,, c@d ,"),
              ElementsAre(EmailAddress{std::nullopt, "\"Lovelace"}, EmailAddress{"Ada", "a@b"},
                          EmailAddress{std::nullopt, "c@d"}));
}

TEST(ParseAddressList, TheListIsSplitBeforeItIsDecoded) {
  EXPECT_THAT(parseAddressList("=?utf-8?q?a=2Cb?= <a@b>"), ElementsAre(EmailAddress{"a,b", "a@b"}));
}

TEST(ParseAddressList, AnAbsentOrBlankValueGivesAnEmptyList) {
  EXPECT_THAT(parseAddressList(std::nullopt), IsEmpty());
  EXPECT_THAT(parseAddressList("  "), IsEmpty());
  EXPECT_THAT(parseAddressList(" , "), IsEmpty());
}

// ---- Ids

TEST(CleanMessageID, BracketsQuotesAndBlanksGoFromTheEndsOnly) {
  EXPECT_EQ(cleanMessageID(" \"<a <b> c>\"\t"), "a <b> c");
}

TEST(CleanMessageID, AnAbsentOrEmptyValueGivesAFreshUUID) {
  const std::string first = cleanMessageID(std::nullopt);
  const std::string second = cleanMessageID(" <> ");
  EXPECT_TRUE(UUID::parse(first) && UUID::parse(second));
  EXPECT_EQ(first, uppercase(first));
  EXPECT_NE(first, second);
}

TEST(CleanReference, NothingLeftGivesNothing) {
  EXPECT_EQ(cleanReference("<\"\n>"), std::nullopt);
  EXPECT_EQ(cleanReference(std::nullopt), std::nullopt);
  EXPECT_EQ(cleanReference("<a> <b>"), "a> <b");
}

TEST(ParseReferences, TheIdsInBracketsComeInOrderAndAreNotTrimmed) {
  EXPECT_THAT(parseReferences("x <a@b>\n< c>y<<d>"), ElementsAre("a@b", " c", "<d"));
}

TEST(ParseReferences, EmptyBracketsAreNoMatchAndTakeNothingAway) {
  EXPECT_THAT(parseReferences("<><a>"), ElementsAre("a"));
  EXPECT_THAT(parseReferences("<><"), ElementsAre("<><"));
}

TEST(ParseReferences, ReferencesWithoutAngleBracketsAreSplitAtBlanks) {
  EXPECT_THAT(parseReferences("  a@b \"c@d\"  <>"), ElementsAre("a@b", "c@d", "<>"));
  EXPECT_THAT(parseReferences(" "), IsEmpty());
  EXPECT_THAT(parseReferences(std::nullopt), IsEmpty());
}

// ---- Labels

TEST(ParseLabels, AQuotedTextHoldingACommaIsOneLabelThatKeepsItsCommaAndLosesItsQuotes) {
  EXPECT_THAT(parseLabels("Inbox,\"Bills, paid\",Work"), ElementsAre("Inbox", "Bills, paid", "Work"));
}

TEST(ParseLabels, EntriesAreTrimmedAndEmptyOnesDroppedAndDuplicatesKept) {
  EXPECT_THAT(parseLabels(" a ,, b , a,\"\""), ElementsAre("a", "b", "a"));
}

TEST(ParseLabels, EachEntryIsDecodedAlone) {
  EXPECT_THAT(parseLabels("=?utf-8?q?caf=C3=A9?=,=?utf-8?q?a=2Cb?=,=?utf-8?q?_?="),
              ElementsAre("caf\u00E9", "a,b"));
  // A comma within an encoded word separates like any other.
  EXPECT_THAT(parseLabels("=?utf-8?q?a,b?="), ElementsAre("=?utf-8?q?a", "b?="));
}

TEST(ParseLabels, AnOpenQuoteProtectsTheRest) {
  EXPECT_THAT(parseLabels("a,\"b,c"), ElementsAre("a", "b,c"));
  EXPECT_THAT(parseLabels(std::nullopt), IsEmpty());
}

TEST(TextPool, EqualTextsShareTheirBytes) {
  TextPool pool;
  const auto first = parseLabels("Inbox,Work", &pool);
  const auto second = parseLabels("Work", &pool);
  EXPECT_EQ(first[1].view().data(), second[0].view().data());
  for (int i = 0; i < 100000; ++i) {  // More than it remembers.
    EXPECT_EQ(pool.text(std::to_string(i)), std::to_string(i));
  }
  EXPECT_EQ(first[0], "Inbox");
}

// ---- Snippets

TEST(MakeSnippet, APlainBodyOf181CharactersGives180AndTheEllipsisAndOneOf180GivesItself) {
  const std::string longest(180, 'x');
  EXPECT_EQ(makeSnippet(longest, std::nullopt), longest);
  EXPECT_EQ(makeSnippet(longest + "y", std::nullopt), longest + "…");
  EXPECT_EQ(makeSnippet(" \n" + longest + " \n\n", std::nullopt), longest);
}

TEST(MakeSnippet, WithAPlainBodyThatIsOnlyWhiteSpaceTheHTMLBodyIsNotConsulted) {
  EXPECT_EQ(makeSnippet(" \n\u00A0", "<p>text</p>"), "");
  EXPECT_EQ(makeSnippet("", "<p>text</p>"), "text");
  EXPECT_EQ(makeSnippet(std::nullopt, "<p>text</p>"), "text");
  EXPECT_EQ(makeSnippet(std::nullopt, std::nullopt), "");
  EXPECT_EQ(makeSnippet("", ""), "");
}

TEST(MakeSnippet, RunsOfWhiteSpaceBecomeOneBlank) {
  EXPECT_EQ(makeSnippet("a \n\t b\u2003\u00A0c", std::nullopt), "a b c");
}

TEST(MakeSnippet, CharactersAreCountedAsPeopleSeeThem) {
  const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // one character of 18 bytes
  std::string text;
  for (int i = 0; i < 180; ++i) {
    text += i % 2 == 0 ? family : "e\u0301";
  }
  EXPECT_EQ(makeSnippet(text, std::nullopt), text);
  EXPECT_EQ(makeSnippet(text + "\u0301", std::nullopt), text + "\u0301");
  EXPECT_EQ(makeSnippet(text + "x", std::nullopt), text + "…");
  std::string marks = "a";
  for (int i = 0; i < 100000; ++i) {
    marks += "\u0301";
  }
  EXPECT_EQ(makeSnippet(marks, std::nullopt), marks);
}

TEST(MakeSnippet, WhiteSpaceWithoutEndBehind180CharactersIsNoFurtherText) {
  const std::string longest(180, 'x');
  EXPECT_EQ(makeSnippet(longest + std::string(100000, ' '), std::nullopt), longest);
  EXPECT_EQ(makeSnippet(longest + std::string(100000, ' ') + "y", std::nullopt), longest + "…");
}

// ---- Thread keys

TEST(NormalizedConversationSubject, PrefixesGoInEveryOrderAndAccentsWithThem) {
  EXPECT_EQ(normalizedConversationSubject("Re: Fwd: RE: Hello"), "hello");
  EXPECT_EQ(normalizedConversationSubject("Re: Fwd: RE: H\u00E9ll\u00F4"), "hello");
  EXPECT_EQ(normalizedConversationSubject("fw:Re:fw:  x "), "x");
}

TEST(NormalizedConversationSubject, ASubjectOfOnlyAReplyPrefixGivesAnEmptyText) {
  EXPECT_EQ(normalizedConversationSubject(" Re: "), "");
  EXPECT_EQ(normalizedConversationSubject("Re:Re:fwd:"), "");
}

TEST(NormalizedConversationSubject, OtherPrefixesStay) {
  EXPECT_EQ(normalizedConversationSubject("AW: Hello"), "aw: hello");
  EXPECT_EQ(normalizedConversationSubject("Re : Hello"), "re : hello");
}

// ---- Hostile sizes

TEST(HostileHeaders, ManyShortEntriesTakeLinearTime) {
  std::string commas(hostileSize, ',');
  EXPECT_THAT(parseAddressList(commas), IsEmpty());
  EXPECT_THAT(parseLabels(commas), IsEmpty());
  EXPECT_EQ(headerParameter("x", std::string(hostileSize, ';')), std::nullopt);
  std::string brackets;
  for (std::size_t i = 0; i < hostileSize / 2; ++i) {
    brackets += "<>";
  }
  EXPECT_EQ(parseReferences(brackets).size(), 1U);
  EXPECT_EQ(parseReferences(std::string(hostileSize, '<')).size(), 1U);
  std::string replies;
  for (std::size_t i = 0; i < hostileSize / 3; ++i) {
    replies += "Re:";
  }
  EXPECT_EQ(normalizedConversationSubject(replies), "");
  EXPECT_EQ(parseSender(std::string(hostileSize, '<'))->address.size(), hostileSize);
}

TEST(HostileHeaders, AHeaderFoldedWithoutEndTakesLinearTime) {
  std::string text = "Subject: x\n";
  while (text.size() < hostileSize) {
    text += " y\n";
  }
  EXPECT_GT(parseHeaders(text).at("subject").size(), hostileSize / 2);
}

TEST(HostileHeaders, LongBodiesGiveTheirSnippetAtOnce) {
  EXPECT_EQ(makeSnippet(std::string(hostileSize, ' '), std::nullopt), "");
  EXPECT_EQ(graphemeCount(makeSnippet(std::string(hostileSize, 'x'), std::nullopt)), 181U);
}

}  // namespace
}  // namespace tidewrack
