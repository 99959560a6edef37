#include "ui/welcome_view.h"

#include <utility>

#include "platform/localized.h"
#include "screen/toolbar.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 96;
constexpr int subtitleWidth = 360;

Gtk::Label* makeCentred(const std::string& text, std::initializer_list<const char*> styleClasses) {
  auto* label = makeLabel(text, styleClasses);
  label->set_xalign(0.5F);
  label->set_justify(Gtk::Justification::CENTER);
  label->set_size_request(-1, -1);
  label->set_max_width_chars(40);
  return label;
}

}  // namespace

WelcomeView::WelcomeView(ContentView& screen, Actions actions)
    : screen_(screen), actions_(std::move(actions)) {
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  set_vexpand(true);
  setIdentifier(*this, "welcome.root");

  auto* column = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
  column->set_valign(Gtk::Align::CENTER);
  column->set_halign(Gtk::Align::CENTER);
  column->set_size_request(subtitleWidth - 2 * 24, -1);
  column->set_margin(24);
  auto* icon = makeSymbol("tray.full.fill", iconSize);
  icon->add_css_class("welcome-icon");
  column->append(*icon);
  column->append(*makeCentred(localized("welcome_title", "Welcome to Tidewrack", "Empty-state welcome title"),
                              {"title-1"}));
  auto* subtitle = makeCentred(
      localized(
          "welcome_subtitle",
          "Import an MBOX file to get started, or wait for iCloud to bring your existing messages to this "
          "device.",
          "Empty-state welcome subtitle"),
      {"welcome-subtitle"});
  column->append(*subtitle);

  auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 10);
  buttons->set_halign(Gtk::Align::CENTER);
  buttons->set_margin_top(12);
  auto* importButton = makeIconButton("tray.and.arrow.down.fill", importButtonTitle());
  importButton->add_css_class("suggested-action");
  importButton->add_css_class("pill");
  setIdentifier(*importButton, "welcome.importButton");
  importButton->signal_clicked().connect([this] { actions_.onImport(); });
  buttons->append(*importButton);

  if (actions_.onRestore) {
    restore_ = makeIconButton(
        "icloud.and.arrow.down",
        localized("welcome_restore_icloud", "Restore from iCloud", "Restore from iCloud button"));
    restore_->add_css_class("pill");
    auto* content = dynamic_cast<Gtk::Box*>(restore_->get_child());
    restoreIcon_ = dynamic_cast<Gtk::Image*>(content->get_first_child());
    content->prepend(restoreSpinner_);
    setIdentifier(*restore_, "welcome.restoreButton");
    restore_->signal_clicked().connect([this] { actions_.onRestore(); });
    buttons->append(*restore_);
  }
  if (actions_.onShowDiscovered) {
    discovered_ = Gtk::make_managed<Gtk::Button>();
    discovered_->add_css_class("pill");
    setIdentifier(*discovered_, "welcome.discoveredButton");
    discovered_->signal_clicked().connect([this] { actions_.onShowDiscovered(); });
    buttons->append(*discovered_);
  }
  column->append(*buttons);

  hint_ = makeCentred(
      localized(
          "welcome_icloud_hint",
          "Your data syncs through CloudKit's private database. It is not visible in iCloud Drive, only "
          "inside the app on devices signed in with the same Apple ID.",
          "Welcome screen iCloud privacy hint"),
      {"row-footer"});
  hint_->set_margin_top(12);
  column->append(*hint_);
  set_child(*column);

  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(screen_.iCloudSyncEnabled);
  follow(screen_.isRestoringFromiCloud);
  follow(screen_.discoveredRemoteLibraries);
  refresh();
}

void WelcomeView::refresh() {
  const bool hasCloud = screen_.iCloudSyncEnabled();
  hint_->set_visible(hasCloud);
  if (restore_ != nullptr) {
    const bool isRestoring = screen_.isRestoringFromiCloud();
    restore_->set_visible(hasCloud);
    restore_->set_sensitive(!isRestoring);
    restoreIcon_->set_visible(!isRestoring);
    restoreSpinner_.set_visible(isRestoring);
    restoreSpinner_.set_spinning(isRestoring);
  }
  if (discovered_ != nullptr) {
    const auto count = static_cast<long long>(screen_.discoveredRemoteLibraries().size());
    discovered_->set_visible(hasCloud && count >= 1);
    discovered_->set_label(
        formatText(localized("welcome_discovered_libraries_button", "%d library(ies) available in iCloud",
                             "Discovered libraries button"),
                   {count}));
  }
}

}  // namespace tidewrack::ui
