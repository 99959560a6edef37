#include "screen/advanced_search.h"

#include "screen/content_view.h"

namespace tidewrack {

AdvancedSearch::AdvancedSearch(ContentView& screen) : screen_(screen) {
  open();
}

AdvancedSearch::Footer AdvancedSearch::footer() const {
  if (!filters().isActive()) {
    return {"info.circle", "No hay filtros activos"};
  }
  return {"line.3.horizontal.decrease.circle", filters().summary()};
}

void AdvancedSearch::open() {
  filters.set(screen_.advancedFilters());
}

void AdvancedSearch::edit(const std::function<void(SearchFilters&)>& change) {
  SearchFilters changed = filters();
  change(changed);
  filters.set(std::move(changed));
}

void AdvancedSearch::chooseLastWeek() {
  edit([now = screen_.services().executor.now()](SearchFilters& changed) { changed.setLastWeek(now); });
}

void AdvancedSearch::chooseLastMonth() {
  edit([now = screen_.services().executor.now()](SearchFilters& changed) { changed.setLastMonth(now); });
}

void AdvancedSearch::chooseLastYear() {
  edit([now = screen_.services().executor.now()](SearchFilters& changed) { changed.setLastYear(now); });
}

void AdvancedSearch::reset() {
  filters.set(SearchFilters::defaults(screen_.services().executor.now()));
}

void AdvancedSearch::apply() {
  if (screen_.isShowingAdvancedSearch()) {
    screen_.isShowingAdvancedSearch.set(false);
    screen_.advancedFilters.set(filters());
  }
}

void AdvancedSearch::cancel() {
  screen_.isShowingAdvancedSearch.set(false);
}

}  // namespace tidewrack
