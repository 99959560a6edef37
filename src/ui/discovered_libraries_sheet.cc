#include "ui/discovered_libraries_sheet.h"

#include <utility>

#include "platform/localized.h"
#include "reading/display_text.h"
#include "ui/chip_flow_layout.h"
#include "ui/sheet_header.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int sheetWidth = 560;
constexpr int placeholderHeight = 260;
constexpr int chipSpacing = 6;
constexpr const char* emptyPage = "empty";
constexpr const char* cardsPage = "cards";

Gtk::Widget* makeMetric(const DiscoveredLibraryCard::Metric& metric) {
  auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  box->append(*makeSymbol(metric.icon, 14, "secondary"));
  box->append(*makeLabel(metric.title, {"row-secondary"}));
  auto* value = makeLabel(metric.value, {"mail-library-name"});
  value->set_hexpand(true);
  value->set_xalign(1.0F);
  box->append(*value);
  return box;
}

void appendChips(Gtk::Box& card, std::string_view icon, const std::string& title,
                 const std::vector<std::string>& texts) {
  if (texts.empty()) {
    return;
  }
  auto* heading = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  heading->append(*makeSymbol(icon, 14, "secondary"));
  heading->append(*makeLabel(title, {"row-secondary"}));
  card.append(*heading);
  auto* chips = Gtk::make_managed<Gtk::Box>();
  chips->set_layout_manager(ChipFlowLayout::create(chipSpacing, chipSpacing));
  for (const auto& text : texts) {
    auto* chip = Gtk::make_managed<Gtk::Label>(shortenedLine(text));
    chip->add_css_class("pill-badge");
    chip->set_ellipsize(Pango::EllipsizeMode::END);
    chips->append(*chip);
  }
  card.append(*chips);
}

}  // namespace

DiscoveredLibrariesSheet::DiscoveredLibrariesSheet(ContentView& screen, Gtk::Widget& covered, Adopt adopt)
    : Sheet(covered), screen_(screen), adopt_(std::move(adopt)) {
  const auto close = [this] { screen_.isShowingDiscoveredLibraries.set(false); };
  auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 0);
  setIdentifier(*content, "discoveredLibraries.root");
  auto* header = makeSheetHeader(
      localized("discovered_libraries_title", "Available in iCloud", "Discovered libraries sheet title"),
      close);
  setIdentifier(header->closeButton(), "discoveredLibraries.close");
  content->append(*header);

  auto* placeholder =
      makeSheetPlaceholder("icloud",
                           localized("discovered_libraries_empty_title", "Nothing new in iCloud",
                                     "Empty discovered libraries title"),
                           localized("discovered_libraries_empty_message",
                                     "Every library synced through iCloud is already on this device.",
                                     "Empty discovered libraries description"));
  placeholder->set_size_request(-1, placeholderHeight);
  setIdentifier(*placeholder, "discoveredLibraries.empty");
  auto* list = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 14);
  list->set_margin(18);
  list->append(*makeLabel(
      localized("discovered_libraries_intro",
                "These libraries live in iCloud but have not been added to this device yet. Adopt them to "
                "make their messages browsable here.",
                "Discovered libraries intro"),
      {"row-secondary"}));
  list->append(cards_);
  pages_.set_vhomogeneous(false);
  pages_.add(*placeholder, emptyPage);
  pages_.add(*list, cardsPage);
  content->append(pages_);
  setContent(*content, sheetWidth);
  setCloseRequest(close);

  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(screen_.isShowingDiscoveredLibraries);
  follow(screen_.discoveredRemoteLibraries);
  follow(screen_.adoptingLibraryIDs);
  refresh();
}

void DiscoveredLibrariesSheet::refresh() {
  if (!screen_.isShowingDiscoveredLibraries()) {
    dismiss();
    return;
  }
  makeCards();
  pages_.set_visible_child(screen_.discoveredRemoteLibraries().empty() ? emptyPage : cardsPage);
  present();
}

void DiscoveredLibrariesSheet::makeCards() {
  removeChildren(cards_);
  for (const auto& library : screen_.discoveredRemoteLibraries()) {
    cards_.append(*makeCard(makeDiscoveredLibraryCard(library), library));
  }
}

Gtk::Widget* DiscoveredLibrariesSheet::makeCard(const DiscoveredLibraryCard& card,
                                                const DiscoveredLibrary& library) {
  auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 10);
  box->add_css_class("card");
  box->add_css_class("discovered-card");
  setIdentifier(*box, "discoveredLibrary." + card.id.string());
  box->append(*makeLabel(shortenedLine(card.name), {"title-3"}));
  box->append(*makeLabel(card.countText, {"row-secondary"}));
  for (const auto& metric : card.metrics) {
    box->append(*makeMetric(metric));
  }
  appendChips(*box, "tag.fill", localized("discovered_library_labels", "Labels", "Labels section"),
              card.labels);
  appendChips(*box, "square.grid.2x2.fill",
              localized("discovered_library_categories", "Categories", "Categories section"),
              card.categories);
  if (adopt_) {
    box->append(*makeAdoptButton(library));
  }
  return box;
}

Gtk::Button* DiscoveredLibrariesSheet::makeAdoptButton(const DiscoveredLibrary& library) {
  const auto look = tidewrack::makeAdoptButton(screen_.adoptingLibraryIDs().contains(library.id));
  auto* button = makeIconButton(look.icon, look.title);
  button->add_css_class("suggested-action");
  button->set_sensitive(look.isEnabled);
  if (look.showsSpinner) {
    auto* spinner = Gtk::make_managed<Gtk::Spinner>();
    spinner->set_spinning(true);
    dynamic_cast<Gtk::Box*>(button->get_child())->prepend(*spinner);
  }
  setIdentifier(*button, "discoveredLibrary.adopt." + library.id.string());
  button->signal_clicked().connect([this, library] { adopt_(library); });
  return button;
}

}  // namespace tidewrack::ui
