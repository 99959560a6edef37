#include "ui/settings_form.h"

#include <utility>

#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int margin = 24;
constexpr int symbolSize = 18;
constexpr const char* symbolKey = "settings-symbol";

}  // namespace

FormSection::FormSection(const std::string& header, std::string_view symbol)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 8) {
  if (!header.empty()) {
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
    if (!symbol.empty()) {
      line->append(*makeSymbol(symbol, 16));
    }
    line->append(*makeLabel(header, {"heading"}));
    append(*line);
  }
  list_.set_selection_mode(Gtk::SelectionMode::NONE);
  list_.add_css_class("boxed-list");
  append(list_);
  if (!header.empty()) {
    setAccessibleLabel(list_, header);
  }
}

void FormSection::addRow(AdwActionRow* row) {
  gtk_list_box_append(list_.gobj(), GTK_WIDGET(row));
}

void FormSection::setFooter(const std::string& text) {
  if (footer_ == nullptr) {
    footer_ = makeLabel(text, {"row-footer"});
    append(*footer_);
  }
  footer_->set_text(text);
}

SettingsForm::SettingsForm(const std::string& title) {
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  set_vexpand(true);
  column_.set_margin(margin);
  if (!title.empty()) {
    column_.append(*makeLabel(title, {"title-2"}));
  }
  set_child(column_);
}

FormSection& SettingsForm::addSection(const std::string& header, std::string_view symbol) {
  auto* section = Gtk::make_managed<FormSection>(header, symbol);
  column_.append(*section);
  return *section;
}

void SettingsForm::follow(Settings& settings, SettingKey key, const std::function<void()>& refresh) {
  subscriptions_.push_back(settings.observe(key, refresh));
  refresh();
}

SettingSwitch::SettingSwitch(Settings& settings, SettingKey key, std::function<void(bool)> store) {
  set_valign(Gtk::Align::CENTER);
  setIdentifier(*this, std::string("settings.toggle.") + definition(key).name);
  set_active(settings.boolean(key));
  property_active().signal_changed().connect([this, &settings, key, store = std::move(store)] {
    const bool isOn = get_active();
    if (isOn == settings.boolean(key)) {
      return;
    }
    if (store) {
      store(isOn);
    } else {
      settings.set(key, isOn);
    }
  });
  subscription_ = settings.observe(key, [this, &settings, key] { set_active(settings.boolean(key)); });
}

AdwActionRow* makeSettingsRow(const InformativeRow& content) {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  adw_action_row_set_title_lines(row, 0);
  adw_action_row_set_subtitle_lines(row, 0);
  setSettingsRow(row, content);
  return row;
}

void setSettingsRow(AdwActionRow* row, const InformativeRow& content) {
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), content.title.c_str());
  adw_action_row_set_subtitle(row, content.text.c_str());
  auto* symbol = static_cast<Gtk::Image*>(g_object_get_data(G_OBJECT(row), symbolKey));
  if (symbol == nullptr && !content.symbol.empty()) {
    symbol = makeSymbol(content.symbol, symbolSize);
    adw_action_row_add_prefix(row, GTK_WIDGET(symbol->gobj()));
    g_object_set_data(G_OBJECT(row), symbolKey, symbol);
  }
  if (symbol != nullptr) {
    setSymbol(*symbol, content.symbol, content.tint);
  }
}

AdwActionRow* makeSwitchRow(const SettingToggle& toggle, Settings& settings,
                            std::function<void(bool)> store) {
  AdwActionRow* row = makeSettingsRow({.symbol = toggle.symbol, .title = toggle.title, .text = toggle.help});
  auto* control = Gtk::make_managed<SettingSwitch>(settings, toggle.key, std::move(store));
  setAccessibleLabel(*control, toggle.title);
  adw_action_row_add_suffix(row, GTK_WIDGET(control->gobj()));
  adw_action_row_set_activatable_widget(row, GTK_WIDGET(control->gobj()));
  return row;
}

AdwActionRow* makeLinkRow(const InformativeRow& content, std::string_view identifier, const char* url) {
  AdwActionRow* row = makeSettingsRow(content);
  gtk_widget_set_name(GTK_WIDGET(row), std::string(identifier).c_str());
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), TRUE);
  adw_action_row_add_suffix(row, gtk_image_new_from_icon_name("adw-external-link-symbolic"));
  g_signal_connect(row, "activated", G_CALLBACK(+[](AdwActionRow* activated, gpointer page) {
                     GtkRoot* root = gtk_widget_get_root(GTK_WIDGET(activated));
                     gtk_show_uri(GTK_IS_WINDOW(root) ? GTK_WINDOW(root) : nullptr,
                                  static_cast<const char*>(page), GDK_CURRENT_TIME);
                   }),
                   const_cast<char*>(url));
  return row;
}

void setRowVisible(AdwActionRow* row, bool isVisible) {
  gtk_widget_set_visible(GTK_WIDGET(row), isVisible ? TRUE : FALSE);
}

}  // namespace tidewrack::ui
