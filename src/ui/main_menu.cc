#include "ui/main_menu.h"

#include "platform/localized.h"
#include "screen/toolbar.h"
#include "ui/widgets.h"

namespace tidewrack::ui {

Gtk::MenuButton* makeMainMenuButton() {
  auto work = Gio::Menu::create();
  work->append(importButtonTitle(), "win.import");
  auto view = Gio::Menu::create();
  view->append(localized("zoom_in", "Zoom In", "Menu entry"), "win.zoom-in");
  view->append(localized("zoom_out", "Zoom Out", "Menu entry"), "win.zoom-out");
  view->append(localized("zoom_reset", "Normal Size", "Menu entry"), "win.zoom-reset");
  auto about = Gio::Menu::create();
  about->append(localized("about_app", "About Tidewrack", "Menu entry"), "app.about");
  about->append(localized("Acerca de los archivos MBOX", "Acerca de los archivos MBOX", "Menu entry"),
                "app.about-mbox");
  about->append(localized("Ayuda de Tidewrack", "Ayuda de Tidewrack", "Menu entry"), "app.help");
  auto settings = Gio::Menu::create();
  settings->append(localized("settings_button", "Settings", "Settings button"), "app.preferences");
  auto end = Gio::Menu::create();
  end->append(localized("quit_app", "Quit", "Menu entry"), "app.quit");
  auto menu = Gio::Menu::create();
  for (const auto& section : {work, view, settings, about, end}) {
    menu->append_section(section);
  }

  auto* button = Gtk::make_managed<Gtk::MenuButton>();
  const std::string label = localized("main_menu", "Main Menu", "Name of the menu button");
  button->set_icon_name("open-menu-symbolic");
  button->set_menu_model(menu);
  button->set_primary(true);
  button->set_tooltip_text(label);
  setIdentifier(*button, "main.menu");
  setAccessibleLabel(*button, label);
  return button;
}

void setShortcuts(Gtk::Application& application) {
  application.set_accels_for_action("app.quit", {"<Control>q"});
  application.set_accels_for_action("app.help", {"<Control>question"});
  application.set_accels_for_action("app.preferences", {"<Control>comma"});
  application.set_accels_for_action("win.import", {"<Control>o"});
  application.set_accels_for_action("win.search", {"<Control>f"});
  application.set_accels_for_action("win.advanced-search", {"<Control><Shift>f"});
  application.set_accels_for_action("win.zoom-in", {"<Control>plus", "<Control>equal", "<Control>KP_Add"});
  application.set_accels_for_action("win.zoom-out", {"<Control>minus", "<Control>KP_Subtract"});
  application.set_accels_for_action("win.zoom-reset", {"<Control>0", "<Control>KP_0"});
  application.set_accels_for_action("window.close", {"<Control>w"});
}

}  // namespace tidewrack::ui
