#include "reading/library_row.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

TEST(LibraryRow, ACountOfOneReadsOneMessage) {
  EXPECT_EQ(messageCountText(1), "1 message");
  EXPECT_EQ(messageCountText(0), "0 messages");
  EXPECT_EQ(messageCountText(2), "2 messages");
}

TEST(LibraryRow, AnImportedLibraryShowsItsFile) {
  MBOXLibrary library;
  library.id = "A";
  library.displayName = "Work";
  library.fileName = "x-work.mbox";
  EXPECT_EQ(makeLibraryRow(library, 3, true),
            (LibraryRow{"A", "archivebox.fill", "Work", "", "3 messages", "x-work.mbox", true}));
}

TEST(LibraryRow, ACloudDerivedLibraryShowsItsBadgeAndWhereItComesFrom) {
  MBOXLibrary library;
  library.id = "A";
  library.displayName = "Far";
  library.isCloudDerived = true;
  EXPECT_EQ(makeLibraryRow(library, 1, false),
            (LibraryRow{"A", "icloud.square.fill", "Far", "iCloud", "1 message",
                        "Synced from iCloud (no local file)", false}));
}

TEST(LibraryRow, EachActionHasItsIconAndItsTip) {
  EXPECT_EQ(icon(LibraryRowAction::select), "line.3.horizontal.decrease.circle");
  EXPECT_EQ(icon(LibraryRowAction::rename), "pencil.circle");
  EXPECT_EQ(icon(LibraryRowAction::remove), "trash.circle.fill");
  EXPECT_EQ(help(LibraryRowAction::select), "Filter messages from this library");
  EXPECT_EQ(help(LibraryRowAction::rename), "Rename library");
  EXPECT_EQ(help(LibraryRowAction::remove), "Delete library");
}

TEST(DiscoveredLibraryCard, HasItsMetricsInTheirOrder) {
  DiscoveredLibrary library;
  library.id = "far";
  library.displayName = "Far";
  library.messageCount = 12;
  library.uniqueSendersCount = 3;
  library.uniqueConversationsCount = 4;
  library.attachmentCount = 5;
  library.earliestDate = parseISO8601("2020-03-04T12:00:00Z");
  library.latestDate = parseISO8601("2021-05-06T12:00:00Z");
  library.labels = {"Inbox", "Work"};
  library.categories = {"Finance"};
  const auto card = makeDiscoveredLibraryCard(library);
  EXPECT_EQ(card.name, "Far");
  EXPECT_EQ(card.countText, "12 messages");
  ASSERT_THAT(card.metrics, SizeIs(6));
  std::vector<std::string_view> icons;
  std::vector<std::string> values;
  for (const auto& metric : card.metrics) {
    icons.push_back(metric.icon);
    values.push_back(metric.value);
  }
  EXPECT_THAT(icons, ElementsAre("envelope.fill", "person.2.fill", "bubble.left.and.bubble.right.fill",
                                 "paperclip", "calendar", "calendar"));
  EXPECT_THAT(values,
              ElementsAre("12", "3", "4", "5", testing::HasSubstr("2020"), testing::HasSubstr("2021")));
  EXPECT_THAT(card.labels, ElementsAre("Inbox", "Work"));
  EXPECT_THAT(card.categories, ElementsAre("Finance"));
}

TEST(DiscoveredLibraryCard, ALibraryWithNoDatesHasNoDateMetrics) {
  EXPECT_THAT(makeDiscoveredLibraryCard({}).metrics, SizeIs(4));
}

TEST(DiscoveredLibraryCard, TheButtonOfAnAdoptionUnderWayIsDisabledBesideASpinner) {
  const auto idle = makeAdoptButton(false);
  EXPECT_EQ(idle.icon, "plus.circle.fill");
  EXPECT_TRUE(idle.isEnabled);
  EXPECT_FALSE(idle.showsSpinner);
  const auto busy = makeAdoptButton(true);
  EXPECT_EQ(busy.icon, "icloud.fill");
  EXPECT_EQ(busy.title, "Adopting…");
  EXPECT_FALSE(busy.isEnabled);
  EXPECT_TRUE(busy.showsSpinner);
}

}  // namespace
}  // namespace tidewrack
