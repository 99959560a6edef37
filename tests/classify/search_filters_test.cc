#include "classify/search_filters.h"

#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include "platform/calendar.h"

namespace tidewrack {
namespace {

/// Months begin and end as in Greenwich for as long as it lives.
class InGreenwich {
 public:
  InGreenwich() { icu::TimeZone::setDefault(*icu::TimeZone::getGMT()); }
  ~InGreenwich() { icu::TimeZone::adoptDefault(before_.release()); }
  InGreenwich(const InGreenwich&) = delete;
  InGreenwich& operator=(const InGreenwich&) = delete;

 private:
  std::unique_ptr<icu::TimeZone> before_{icu::TimeZone::createDefault()};
};

EmailMessage withAttachments(const std::vector<std::size_t>& sizes) {
  EmailMessage message;
  for (const auto size : sizes) {
    EmailAttachment attachment;
    attachment.fileName = "Plan.PDF";
    attachment.mimeType = "application/octet-stream";
    attachment.data = Content::ofBytes(std::string(size, 'x'));
    message.attachments.push_back(std::move(attachment));
  }
  return message;
}

TEST(SearchFilters, SizesFollowTheDecimalThresholds) {
  EXPECT_EQ(sizeClass(EmailMessage()), SizeFilter::small);
  EXPECT_EQ(sizeClass(withAttachments({9'999})), SizeFilter::small);
  EXPECT_EQ(sizeClass(withAttachments({10'000})), SizeFilter::medium);
  EXPECT_EQ(sizeClass(withAttachments({100'000})), SizeFilter::medium);
  EXPECT_EQ(sizeClass(withAttachments({100'001})), SizeFilter::large);
  SearchFilters filters;
  filters.sizeFilter = SizeFilter::medium;
  EXPECT_TRUE(filters.matches(withAttachments({10'000})));
  EXPECT_FALSE(filters.matches(withAttachments({9'999})));
}

TEST(SearchFilters, TwoAttachmentsOfSixThousandBytesAreMedium) {
  EXPECT_EQ(sizeClass(withAttachments({6'000, 6'000})), SizeFilter::medium);
}

TEST(SearchFilters, AMessageWithNoDatePassesEveryRange) {
  SearchFilters filters;
  filters.useDateFilter = true;
  filters.startDate = Date(std::chrono::days(10));
  filters.endDate = Date(std::chrono::days(5));
  EXPECT_TRUE(filters.matches(EmailMessage()));
  EmailMessage dated;
  dated.date = Date(std::chrono::days(7));
  EXPECT_FALSE(filters.matches(dated));
}

TEST(SearchFilters, TheEndOfTheRangeIsAnInstantAndNotADay) {
  SearchFilters filters;
  filters.useDateFilter = true;
  filters.endDate = Date(std::chrono::days(5) + std::chrono::hours(12));
  EmailMessage message;
  message.date = filters.endDate;
  EXPECT_TRUE(filters.matches(message));
  message.date = filters.endDate + std::chrono::seconds(1);
  EXPECT_FALSE(filters.matches(message));
}

TEST(SearchFilters, AnAttachmentTypeUnderAnyIsActiveAndExcludesNothing) {
  SearchFilters filters;
  filters.attachmentType = "pdf";
  EXPECT_TRUE(filters.isActive());
  EXPECT_TRUE(filters.matches(EmailMessage()));
  EXPECT_FALSE(filters.textFilters().isActive());
}

TEST(SearchFilters, AnAttachmentTypeIsLookedForInNameAndMIMETypeWithoutRegardToCase) {
  SearchFilters filters;
  filters.attachmentFilter = AttachmentFilter::withAttachments;
  for (const char* type : {"pdf", "OCTET"}) {
    filters.attachmentType = type;
    EXPECT_TRUE(filters.matches(withAttachments({1})));
    EXPECT_TRUE(filters.textFilters().matches(withAttachments({1})));
  }
  filters.attachmentType = "jpg";
  EXPECT_FALSE(filters.matches(withAttachments({1})));
  filters.attachmentFilter = AttachmentFilter::withoutAttachments;
  EXPECT_TRUE(filters.matches(EmailMessage()));
  EXPECT_FALSE(filters.matches(withAttachments({1})));
}

TEST(SearchFilters, AQueryOfOneBlankIsActive) {
  SearchFilters filters;
  EXPECT_FALSE(filters.isActive());
  filters.subjectQuery = " ";
  EXPECT_TRUE(filters.isActive());
}

TEST(SearchFilters, TheDatesAloneDoNotCount) {
  EXPECT_FALSE(SearchFilters::defaults(Date(std::chrono::days(20'000))).isActive());
}

TEST(SearchFilters, TheDatesBeginAsTheYearBefore) {
  const InGreenwich zone;
  const auto now = *parseISO8601("2026-03-01T12:00:00Z");
  const auto filters = SearchFilters::defaults(now);
  EXPECT_EQ(filters.startDate, *parseISO8601("2025-03-01T12:00:00Z"));
  EXPECT_EQ(filters.endDate, now);
}

TEST(SearchFilters, TheShortcutsAreAWeekAMonthAndAYear) {
  const InGreenwich zone;
  const auto now = *parseISO8601("2026-03-31T12:00:00Z");
  SearchFilters filters;
  filters.setLastWeek(now);
  EXPECT_EQ(filters.startDate, *parseISO8601("2026-03-24T12:00:00Z"));
  filters.setLastMonth(now);
  EXPECT_EQ(filters.startDate, *parseISO8601("2026-02-28T12:00:00Z"));
  filters.setLastYear(now);
  EXPECT_EQ(filters.startDate, *parseISO8601("2025-03-31T12:00:00Z"));
  EXPECT_EQ(filters.endDate, now);
}

TEST(SearchFilters, EachFilterAloneIsActive) {
  const std::vector<std::function<void(SearchFilters&)>> changes = {
      [](SearchFilters& filters) { filters.subjectQuery = "a"; },
      [](SearchFilters& filters) { filters.bodyQuery = "a"; },
      [](SearchFilters& filters) { filters.fromQuery = "a"; },
      [](SearchFilters& filters) { filters.useDateFilter = true; },
      [](SearchFilters& filters) { filters.attachmentFilter = AttachmentFilter::withAttachments; },
      [](SearchFilters& filters) { filters.attachmentFilter = AttachmentFilter::withoutAttachments; },
      [](SearchFilters& filters) { filters.attachmentType = "a"; },
      [](SearchFilters& filters) { filters.onlyInConversations = true; },
      [](SearchFilters& filters) { filters.onlyHTML = true; },
      [](SearchFilters& filters) { filters.sizeFilter = SizeFilter::small; }};
  for (std::size_t i = 0; i < changes.size(); ++i) {
    SearchFilters filters;
    changes[i](filters);
    EXPECT_TRUE(filters.isActive()) << i;
  }
}

TEST(SearchFilters, TheStartOfTheRangeBelongsToIt) {
  SearchFilters filters;
  filters.useDateFilter = true;
  filters.startDate = filters.endDate = Date(std::chrono::days(20'000));
  EmailMessage message;
  message.date = filters.startDate;
  EXPECT_TRUE(filters.matches(message));
  *message.date -= std::chrono::milliseconds(1);
  EXPECT_FALSE(filters.matches(message));
}

TEST(SearchFilters, ThePickersSayWhatTheyOffer) {
  EXPECT_STREQ(label(AttachmentFilter::any), "Cualquiera");
  EXPECT_STREQ(label(AttachmentFilter::withAttachments), "Con adjuntos");
  EXPECT_STREQ(label(AttachmentFilter::withoutAttachments), "Sin adjuntos");
  EXPECT_STREQ(label(SizeFilter::any), "Cualquiera");
  EXPECT_STREQ(label(SizeFilter::small), "Pequeño (< 10 KB)");
  EXPECT_STREQ(label(SizeFilter::medium), "Mediano (10-100 KB)");
  EXPECT_STREQ(label(SizeFilter::large), "Grande (> 100 KB)");
}

TEST(SearchFilters, TheSummaryTellsTheRange) {
  SearchFilters filters;
  filters.subjectQuery = "a";
  filters.useDateFilter = true;
  filters.startDate = *parseISO8601("2026-01-02T12:00:00Z");
  filters.endDate = *parseISO8601("2026-03-04T12:00:00Z");
  filters.attachmentFilter = AttachmentFilter::withAttachments;
  EXPECT_EQ(filters.summary(), "asunto contiene 'a', entre " + formatShortDate(filters.startDate) + " y " +
                                   formatShortDate(filters.endDate) + ", con adjuntos");
}

TEST(SearchFilters, HTMLIsSearchedAsMarkup) {
  SearchFilters filters;
  filters.bodyQuery = "DIV";
  EmailMessage message;
  message.plainBody = Content::ofBytes("nothing");
  EXPECT_FALSE(filters.matches(message));
  message.htmlBody = Content::ofBytes("<div>text</div>");
  EXPECT_TRUE(filters.matches(message));
}

TEST(SearchFilters, TheSenderIsSearchedInItsDisplayForm) {
  SearchFilters filters;
  filters.fromQuery = "ann <ann@";
  EmailMessage message;
  message.from = {Text("Ann"), "ann@example.org"};
  EXPECT_TRUE(filters.matches(message));
  message.from.name.reset();
  EXPECT_FALSE(filters.matches(message));
}

TEST(SearchFilters, TheSummaryLeavesOutTypeOptionsAndSize) {
  SearchFilters filters;
  filters.attachmentType = "pdf";
  filters.onlyHTML = true;
  filters.onlyInConversations = true;
  filters.sizeFilter = SizeFilter::large;
  EXPECT_EQ(filters.summary(), "Sin filtros");
  filters.subjectQuery = "a";
  filters.bodyQuery = "b";
  filters.fromQuery = "c";
  filters.attachmentFilter = AttachmentFilter::withoutAttachments;
  EXPECT_EQ(filters.summary(), "asunto contiene 'a', contenido contiene 'b', de 'c', sin adjuntos");
}

}  // namespace
}  // namespace tidewrack
