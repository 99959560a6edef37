#pragma once

#include <functional>
#include <string>
#include <vector>

#include <adwaita.h>
#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/advanced_search.h"
#include "screen/content_view.h"
#include "ui/date_time_button.h"
#include "ui/settings_form.h"
#include "ui/sheet.h"

namespace tidewrack::ui {

/// The advanced filters over the main window, for as long as the screen says so. Main thread only.
class AdvancedSearchSheet : public Sheet {
 public:
  /// Both outlive the sheet.
  AdvancedSearchSheet(ContentView& screen, Gtk::Widget& covered);

  static constexpr int width = 460;
  static constexpr int height = 560;

 private:
  using Change = std::function<void(SearchFilters&)>;

  void makeContent();
  void addTexts(SettingsForm& form);
  void addDates(SettingsForm& form);
  void addAttachments(SettingsForm& form);
  void addOptions(SettingsForm& form);
  Gtk::Widget* makeFoot();
  // The rows. Each shows its part of the working copy and writes it back.
  Gtk::Widget& addEntry(FormSection& section, const char* title, const char* identifier,
                        std::string SearchFilters::*field);
  void addSwitch(FormSection& section, const char* title, const char* identifier, bool SearchFilters::*field);
  template <typename Choice>
  void addPicker(FormSection& section, const char* title, const char* identifier, std::vector<Choice> choices,
                 Choice SearchFilters::*field);
  Gtk::Widget& addDate(FormSection& section, const char* title, const char* identifier,
                       Date SearchFilters::*field);
  void addShortcuts(FormSection& section);
  /// Runs now and whenever the working copy changes.
  void follow(std::function<void(const SearchFilters&)> show);
  void edit(const Change& change);
  void refresh();
  void showOrHide();

  ContentView& screen_;
  AdvancedSearch search_;
  std::vector<std::function<void(const SearchFilters&)>> shows_;
  bool isRefreshing_ = false;  ///< The rows change because the working copy did.
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
