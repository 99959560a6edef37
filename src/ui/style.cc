#include "ui/style.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <set>

#include <adwaita.h>
#include <gtkmm.h>

namespace tidewrack::ui {
namespace {

constexpr const char* iconFolder = "/io/marloon/Tidewrack/icons";
constexpr const char* commonSheet = "/io/marloon/Tidewrack/style.css";
constexpr const char* darkSheet = "/io/marloon/Tidewrack/style-dark.css";

// The sheets of the default display.
class Sheets {
 public:
  static Sheets& shared() {
    static Sheets sheets;
    return sheets;
  }

  void install() {
    common_ = add(commonSheet);
    // The texts of mail are selectable; a popover or a Tab key that comes to one shall not mark all of it.
    Gtk::Settings::get_for_display(display())->property_gtk_label_select_on_focus() = false;
    AdwStyleManager* manager = adw_style_manager_get_default();
    followAppearance(manager);
    g_signal_connect(manager, "notify::dark",
                     G_CALLBACK(+[](AdwStyleManager* changed, GParamSpec*, gpointer) {
                       shared().followAppearance(changed);
                     }),
                     nullptr);
  }

  // Adds a class for the colour unless it is there.
  void makeKnown(const std::string& styleClass, const std::string& colour) {
    if (!known_.insert(styleClass).second) {
      return;
    }
    rules_ += "." + styleClass + " { color: " + colour + "; }\n";
    if (!colours_) {
      colours_ = Gtk::CssProvider::create();
      put(colours_);
    }
    colours_->load_from_data(rules_);
  }

 private:
  static Glib::RefPtr<Gdk::Display> display() { return Gdk::Display::get_default(); }

  static void put(const Glib::RefPtr<Gtk::CssProvider>& sheet) {
    Gtk::StyleContext::add_provider_for_display(display(), sheet, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  }

  static Glib::RefPtr<Gtk::CssProvider> add(const char* resource) {
    auto sheet = Gtk::CssProvider::create();
    sheet->load_from_resource(resource);
    put(sheet);
    return sheet;
  }

  // The dark sheet is there only while the desktop is dark.
  void followAppearance(AdwStyleManager* manager) {
    if (dark_) {
      Gtk::StyleContext::remove_provider_for_display(display(), dark_);
      dark_.reset();
    }
    if (adw_style_manager_get_dark(manager) != FALSE) {
      dark_ = add(darkSheet);
    }
  }

  Glib::RefPtr<Gtk::CssProvider> common_;
  Glib::RefPtr<Gtk::CssProvider> dark_;
  Glib::RefPtr<Gtk::CssProvider> colours_;
  std::set<std::string> known_;
  std::string rules_;
};

int toByte(double part) {
  return static_cast<int>(std::lround(part * 255.0));
}

}  // namespace

void installStyle() {
  Gtk::IconTheme::get_for_display(Gdk::Display::get_default())->add_resource_path(iconFolder);
  Sheets::shared().install();
}

bool isDark() {
  return adw_style_manager_get_dark(adw_style_manager_get_default()) != FALSE;
}

std::string tintClass(std::string_view colour) {
  return "tint-" + std::string(colour);
}

std::string colourClass(const RGBColor& colour) {
  std::array<char, 8> digits{};
  std::snprintf(digits.data(), digits.size(), "%02x%02x%02x", toByte(colour.red), toByte(colour.green),
                toByte(colour.blue));
  std::string styleClass = std::string("rgb-") + digits.data();
  Sheets::shared().makeKnown(styleClass, std::string("#") + digits.data());
  return styleClass;
}

}  // namespace tidewrack::ui
