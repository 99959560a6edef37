#include "ui/settings_panel_view.h"

#include <string>
#include <utility>

#include "platform/localized.h"
#include "reading/icons.h"
#include "ui/general_settings_tab.h"
#include "ui/intelligence_settings_tab.h"
#include "ui/spotlight_settings_tab.h"
#include "ui/sync_settings_tab.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

using Tab = SettingsPanel::SettingsTab;

SettingsPanelView::SettingsPanelView(const SettingsSubjects& subjects, std::function<void()> close)
    : Gtk::Box(Gtk::Orientation::VERTICAL) {
  panel_.showsCloseButton = static_cast<bool>(close);
  setIdentifier(*this, "settings.root");
  set_size_request(SettingsPanel::width, SettingsPanel::height);
  stack_ = ADW_VIEW_STACK(adw_view_stack_new());
  addHeader(std::move(close));
  append(*wrapWidget(GTK_WIDGET(stack_)));

  iCloudSyncMonitor* monitor = subjects.syncMonitor;
  if (monitor == nullptr) {
    ownMonitor_ = std::make_unique<iCloudSyncMonitor>(subjects.settings);
    monitor = ownMonitor_.get();
  }
  addTab(Tab::general, *Gtk::make_managed<GeneralSettingsTab>(subjects.settings));
  addTab(Tab::sync, *Gtk::make_managed<iCloudSettingsView>(subjects.settings, *monitor));
  addTab(Tab::spotlight, *Gtk::make_managed<SpotlightSettingsTab>(subjects.settings));
  addTab(Tab::intelligence, *Gtk::make_managed<IntelligenceSettingsTab>(
                                subjects.settings, subjects.intelligence, subjects.executor));
  followSelection();
}

void SettingsPanelView::addHeader(std::function<void()> close) {
  auto* bar = ADW_HEADER_BAR(adw_header_bar_new());
  auto* tabs = ADW_VIEW_SWITCHER(adw_view_switcher_new());
  adw_view_switcher_set_policy(tabs, ADW_VIEW_SWITCHER_POLICY_NARROW);
  adw_view_switcher_set_stack(tabs, stack_);
  gtk_widget_set_name(GTK_WIDGET(tabs), "settings.tabs");
  adw_header_bar_set_title_widget(bar, GTK_WIDGET(tabs));
  adw_header_bar_set_show_start_title_buttons(bar, panel_.showsCloseButton ? FALSE : TRUE);
  adw_header_bar_set_show_end_title_buttons(bar, panel_.showsCloseButton ? FALSE : TRUE);
  if (panel_.showsCloseButton) {
    auto* button =
        Gtk::make_managed<Gtk::Button>(localized("close_button", "Close", "Close button of a sheet"));
    setIdentifier(*button, "settings.close");
    button->signal_clicked().connect([close = std::move(close)] { close(); });
    adw_header_bar_pack_end(bar, GTK_WIDGET(button->gobj()));
  }
  append(*wrapWidget(GTK_WIDGET(bar)));
}

void SettingsPanelView::addTab(Tab tab, Gtk::Widget& content) {
  const std::string title(rawValue(tab));
  setIdentifier(content, "settings.tab." + title);
  adw_view_stack_add_titled_with_icon(stack_, GTK_WIDGET(content.gobj()), title.c_str(), title.c_str(),
                                      iconName(symbol(tab)).c_str());
}

void SettingsPanelView::followSelection() {
  const auto show = [this] {
    adw_view_stack_set_visible_child_name(stack_, std::string(rawValue(panel_.selectedTab())).c_str());
  };
  selection_ = panel_.selectedTab.observe(show);
  show();
  g_signal_connect(stack_, "notify::visible-child-name",
                   G_CALLBACK(+[](AdwViewStack* stack, GParamSpec*, gpointer self) {
                     const char* name = adw_view_stack_get_visible_child_name(stack);
                     for (const Tab tab : allSettingsTabs) {
                       if (name != nullptr && rawValue(tab) == name) {
                         static_cast<SettingsPanelView*>(self)->panel_.selectedTab.set(tab);
                       }
                     }
                   }),
                   this);
}

}  // namespace tidewrack::ui
