#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <adwaita.h>
#include <gtkmm.h>

#include "platform/observable.h"
#include "platform/settings.h"
#include "screen/settings_panel.h"

/// What the tabs of the settings are built from. Main thread only.
namespace tidewrack::ui {

/// A headed group of rows with a line of explanation below. Header, symbol and footer may be empty.
class FormSection : public Gtk::Box {
 public:
  explicit FormSection(const std::string& header = {}, std::string_view symbol = {});

  void addRow(Gtk::Widget& row) { list_.append(row); }
  void addRow(AdwActionRow* row);
  void setFooter(const std::string& text);

 private:
  Gtk::ListBox list_;
  Gtk::Label* footer_ = nullptr;
};

/// A scrolled column of sections, with the tab's title above them where it has one.
class SettingsForm : public Gtk::ScrolledWindow {
 public:
  explicit SettingsForm(const std::string& title = {});

  FormSection& addSection(const std::string& header = {}, std::string_view symbol = {});

 protected:
  /// Calls `refresh` now and after each change of the setting.
  void follow(Settings& settings, SettingKey key, const std::function<void()>& refresh);
  /// The same for a field that is observed.
  template <typename Field>
  void follow(Field& field, const std::function<void()>& refresh) {
    subscriptions_.push_back(field.observe(refresh));
    refresh();
  }

 private:
  Gtk::Box column_{Gtk::Orientation::VERTICAL, 24};
  std::vector<Subscription> subscriptions_;
};

/// A switch that shows a setting and sets it. `store` takes the place of setting it when given; it is called
/// for what the user does, never for a change that comes from elsewhere.
class SettingSwitch : public Gtk::Switch {
 public:
  SettingSwitch(Settings& settings, SettingKey key, std::function<void(bool)> store = {});

 private:
  Subscription subscription_;
};

/// A row of title and text, with a symbol before them where there is one. The caller puts it into a section.
AdwActionRow* makeSettingsRow(const InformativeRow& content);
/// Changes the texts and the symbol of such a row.
void setSettingsRow(AdwActionRow* row, const InformativeRow& content);
/// A row with a switch, named "settings.toggle." and the setting's name.
AdwActionRow* makeSwitchRow(const SettingToggle& toggle, Settings& settings,
                            std::function<void(bool)> store = {});
/// A row that opens a page in the browser, named `identifier`.
AdwActionRow* makeLinkRow(const InformativeRow& content, std::string_view identifier, const char* url);
/// Shows or hides a row.
void setRowVisible(AdwActionRow* row, bool isVisible);

}  // namespace tidewrack::ui
