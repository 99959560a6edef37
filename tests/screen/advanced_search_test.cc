#include "screen/advanced_search.h"

#include "screen_world.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;

class AdvancedSearchTest : public ScreenWorld {
 protected:
  AdvancedSearchTest() : search(screen()) {
    screen().isShowingAdvancedSearch.set(true);
    search.open();
  }

  AdvancedSearch search;
};

TEST_F(AdvancedSearchTest, TheWorkingCopyBeginsAsTheAppliedFilters) {
  SearchFilters filters = screen().advancedFilters();
  filters.fromQuery = "ann";
  screen().advancedFilters.set(filters);
  EXPECT_NE(search.filters(), filters);
  search.open();
  EXPECT_EQ(search.filters(), filters);
}

TEST_F(AdvancedSearchTest, OnlyApplyingReachesTheListAndCloses) {
  search.edit([](SearchFilters& filters) { filters.subjectQuery = "plan"; });
  EXPECT_FALSE(screen().advancedFilters().isActive());
  search.apply();
  EXPECT_EQ(screen().advancedFilters().subjectQuery, "plan");
  EXPECT_FALSE(screen().isShowingAdvancedSearch());
}

TEST_F(AdvancedSearchTest, CancellingDiscardsTheWorkingCopy) {
  search.edit([](SearchFilters& filters) { filters.subjectQuery = "plan"; });
  search.cancel();
  EXPECT_FALSE(screen().advancedFilters().isActive());
  EXPECT_FALSE(screen().isShowingAdvancedSearch());
  search.apply();
  EXPECT_FALSE(screen().advancedFilters().isActive()) << "the sheet has gone";
}

TEST_F(AdvancedSearchTest, ClearingBringsBackTheDefaultsWithoutApplyingOrClosing) {
  SearchFilters filters = screen().advancedFilters();
  filters.fromQuery = "ann";
  screen().advancedFilters.set(filters);
  search.open();
  executor.advance(1h);
  search.reset();
  EXPECT_EQ(search.filters(), SearchFilters::defaults(executor.now()));
  EXPECT_EQ(screen().advancedFilters(), filters);
  EXPECT_TRUE(screen().isShowingAdvancedSearch());
}

TEST_F(AdvancedSearchTest, ShortcutsSetBothDatesAndDoNotTurnOnTheFilter) {
  search.chooseLastWeek();
  EXPECT_EQ(search.filters().startDate, executor.now() - std::chrono::days(7));
  EXPECT_EQ(search.filters().endDate, executor.now());
  EXPECT_FALSE(search.filters().useDateFilter);
  search.chooseLastMonth();
  EXPECT_LE(search.filters().startDate, executor.now() - std::chrono::days(28));
  EXPECT_GE(search.filters().startDate, executor.now() - std::chrono::days(31));
  search.chooseLastYear();
  EXPECT_LE(search.filters().startDate, executor.now() - std::chrono::days(365));
  EXPECT_GE(search.filters().startDate, executor.now() - std::chrono::days(366));
  EXPECT_EQ(search.filters().endDate, executor.now());
}

TEST_F(AdvancedSearchTest, TheFootSaysWhatIsSetOrThatNothingIs) {
  EXPECT_EQ(search.footer(), (AdvancedSearch::Footer{"info.circle", "No hay filtros activos"}));
  search.edit([](SearchFilters& filters) {
    filters.subjectQuery = "plan";
    filters.attachmentFilter = AttachmentFilter::withAttachments;
  });
  EXPECT_EQ(search.footer().text, "asunto contiene 'plan', con adjuntos");
  search.reset();
  search.edit([](SearchFilters& filters) { filters.onlyHTML = true; });
  EXPECT_EQ(search.footer().text, "Sin filtros");
}

}  // namespace
}  // namespace tidewrack
