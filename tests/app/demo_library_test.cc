#include "app/demo_library.h"

#include <algorithm>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "classify/gmail_labels.h"
#include "classify/label_classification.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST(DemoLibrary, HasItsThreeLibrariesInOrder) {
  const auto libraries = demoLibraries();
  ASSERT_THAT(libraries, SizeIs(3));
  EXPECT_EQ(libraries[0].id, "demo-library-personal");
  EXPECT_EQ(libraries[0].displayName, "Personal Archive");
  EXPECT_EQ(libraries[0].fileName, "personal.mbox");
  EXPECT_EQ(formatISO8601(libraries[0].importedAt), "2026-05-14T10:00:00Z");
  EXPECT_EQ(libraries[1].id, "demo-library-work");
  EXPECT_EQ(libraries[1].displayName, "Work Mail");
  EXPECT_EQ(libraries[1].fileName, "work.mbox");
  EXPECT_EQ(formatISO8601(libraries[1].importedAt), "2026-04-28T09:30:00Z");
  EXPECT_EQ(libraries[2].id, "demo-library-newsletters");
  EXPECT_EQ(libraries[2].displayName, "Newsletters");
  EXPECT_EQ(libraries[2].fileName, "newsletters.mbox");
  EXPECT_EQ(formatISO8601(libraries[2].importedAt), "2026-04-12T08:15:00Z");
  for (const auto& library : libraries) {
    EXPECT_FALSE(library.isCloudDerived);
  }
}

TEST(DemoLibrary, HasItsFifteenMessagesInOrder) {
  struct Expected {
    const char* subject;
    const char* date;
    const char* attachment;
    const char* conversation;
  };
  const std::vector<Expected> expected = {
      {"Your itinerary for Lisbon — June 21", "2026-06-18T09:12:00Z", "boarding-pass-TP1027.pdf", nullptr},
      {"Q2 roadmap review — agenda", "2026-06-17T16:45:00Z", "Q2-roadmap-draft.pdf", nullptr},
      {"Summer sale: 30% off our entire collection", "2026-06-15T11:05:00Z", nullptr, "conv-linen-summer"},
      {"Re: Q2 roadmap review — agenda", "2026-06-17T18:10:00Z", nullptr, nullptr},
      {"Photos from the weekend", "2026-06-14T20:32:00Z", nullptr, "conv-weekend-photos"},
      {"Reminder: Dentist appointment tomorrow at 10:00", "2026-06-12T07:00:00Z", nullptr,
       "conv-dentist-reminder"},
      {"Draft: API migration retro", "2026-06-09T22:48:00Z", nullptr, nullptr},
      {"Maria invited you to connect", "2026-06-05T13:18:00Z", nullptr, "conv-linkedin-invite-maria"},
      {nullptr, "2026-06-02T17:04:00Z", nullptr, "conv-forum-imagerenderer"},
      {"Receipt — Brunch at Casa Lila", "2026-05-30T12:56:00Z", "receipt-casalila.pdf",
       "conv-receipt-casalila"},
      {"Offer letter — please review and sign", "2026-05-24T15:22:00Z", "offer-letter-2026-05.pdf",
       "conv-offer-letter"},
      {"Dinner on Saturday?", "2026-05-19T19:41:00Z", nullptr, "conv-dinner-saturday"},
      {"Your monthly statement is ready", "2026-05-12T06:00:00Z", "statement-may-2026.pdf",
       "conv-bank-statement-may"},
      {"Welcome to Northwind!", "2025-11-04T09:15:00Z", nullptr, "conv-welcome-northwind"},
      {"Last chance: extend your warranty", "2026-04-02T10:00:00Z", nullptr, nullptr},
  };
  const auto messages = demoMessages();
  ASSERT_THAT(messages, SizeIs(expected.size()));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const EmailMessage& message = *messages[i];
    SCOPED_TRACE(message.subject.string());
    if (expected[i].subject != nullptr) {
      EXPECT_EQ(message.subject, expected[i].subject);
    } else {
      EXPECT_THAT(message.subject.string(), StartsWith("Re: ["));
    }
    EXPECT_EQ(formatISO8601(*message.date), expected[i].date);
    if (expected[i].attachment != nullptr) {
      ASSERT_THAT(message.attachments, SizeIs(1));
      EXPECT_EQ(message.attachments[0].fileName, expected[i].attachment);
      EXPECT_THAT(message.attachments[0].data.bytes(), StartsWith("%PDF-1.4\n"));
    } else {
      EXPECT_THAT(message.attachments, IsEmpty());
    }
    if (expected[i].conversation != nullptr) {
      EXPECT_EQ(message.conversationID, expected[i].conversation);
    }
    EXPECT_FALSE(message.conversationID.empty());
    EXPECT_FALSE(message.snippet.empty());
  }
  EXPECT_EQ(messages[1]->conversationID, messages[3]->conversationID);
}

TEST(DemoLibrary, TwoRunsGiveIdenticalValuesIdsAndDates) {
  const auto first = demoMessages();
  const auto second = demoMessages();
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(*first[i], *second[i]);
  }
  EXPECT_EQ(demoLibraries(), demoLibraries());
}

TEST(DemoLibrary, MessageIdsAreUniqueAcrossTheThreeLibraries) {
  std::set<std::string> ids;
  std::set<std::string> libraries;
  for (const auto& message : demoMessages()) {
    ids.insert(message->id.string());
    libraries.insert(message->sourceLibraryID.string() + "/" + message->sourceLibraryName.string());
  }
  EXPECT_THAT(ids, SizeIs(15));
  EXPECT_THAT(libraries,
              ElementsAre("demo-library-newsletters/Newsletters", "demo-library-personal/Personal Archive",
                          "demo-library-work/Work Mail"));
}

TEST(DemoLibrary, EachKindOfLabelOccurs) {
  const auto classification = LabelClassification::classify(demoMessages());
  EXPECT_THAT(classification.systemMailboxes, SizeIs(9));
  EXPECT_THAT(classification.gmailCategories, SizeIs(5));
  EXPECT_FALSE(classification.userLabelTree.empty());
}

TEST(DemoLibrary, ItsAddressesLieInReservedDomains) {
  const auto isReserved = [](const EmailAddress& address) {
    const std::string text = address.address.string();
    return text.ends_with(".example") || text.ends_with("@example.com") || text.ends_with("@example.org") ||
           text.ends_with("@example.net");
  };
  for (const auto& message : demoMessages()) {
    EXPECT_TRUE(isReserved(message->from)) << displayForm(message->from);
    EXPECT_TRUE(std::ranges::all_of(message->to, isReserved));
    EXPECT_TRUE(std::ranges::all_of(message->cc, isReserved));
  }
}

TEST(DemoLibrary, AnHTMLBodyIsAWholeDocumentBesideAPlainOne) {
  EXPECT_EQ(demoHTMLDocument("T", "P", "<p>B</p>"),
            "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>T</title>\n"
            "<meta name=\"color-scheme\" content=\"light dark\">\n</head>\n"
            "<body style=\"font-family:-apple-system,BlinkMacSystemFont,'SF Pro Text','Helvetica Neue',"
            "sans-serif;color:#1d1d1f;line-height:1.55;max-width:640px;margin:0 auto;padding:24px;\">\n"
            "<span style=\"display:none;\">P</span>\n<p>B</p>\n</body>\n</html>");
  const auto messages = demoMessages();
  for (const std::size_t index : {0U, 2U}) {
    ASSERT_TRUE(messages[index]->htmlBody);
    EXPECT_TRUE(messages[index]->plainBody);
    EXPECT_THAT(messages[index]->htmlBody->bytes(), StartsWith("<!DOCTYPE html>"));
  }
}

}  // namespace
}  // namespace tidewrack
