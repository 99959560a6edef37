#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "classify/search_filters.h"
#include "platform/observable.h"

namespace tidewrack {

class ContentView;

/// The advanced search sheet: a working copy of the advanced filters, which reach the list only when they are
/// applied. Main thread only.
class AdvancedSearch {
 public:
  /// The screen outlives it.
  explicit AdvancedSearch(ContentView& screen);

  /// The working copy.
  Observable<SearchFilters> filters;

  /// The line at the foot of the sheet.
  struct Footer {
    std::string_view icon;  ///< Platform symbol name.
    std::string text;
    friend bool operator==(const Footer&, const Footer&) = default;
  };
  [[nodiscard]] Footer footer() const;

  /// Takes over the applied filters. To be called when the sheet opens.
  void open();
  /// Changes something in the working copy.
  void edit(const std::function<void(SearchFilters&)>& change);
  /// Sets both dates; does not turn on the filter by date.
  void chooseLastWeek();
  void chooseLastMonth();
  void chooseLastYear();
  /// Brings back the defaults, neither applied nor closed.
  void reset();
  /// Makes the working copy the applied filters and closes the sheet.
  void apply();
  /// Closes the sheet; the applied filters stay as they are.
  void cancel();

 private:
  ContentView& screen_;
};

}  // namespace tidewrack
