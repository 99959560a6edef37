#include "ui/manage_libraries_sheet.h"

#include <algorithm>

#include "platform/localized.h"
#include "ui/sheet_header.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int sheetWidth = 560;
constexpr int placeholderHeight = 260;
constexpr const char* emptyPage = "empty";
constexpr const char* listPage = "list";

}  // namespace

ManageLibrariesSheet::ManageLibrariesSheet(ContentView& screen, Gtk::Widget& covered)
    : Sheet(covered), screen_(screen) {
  const auto close = [this] { screen_.isShowingManageLibrariesSheet.set(false); };
  auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 0);
  setIdentifier(*content, "manageLibraries.root");
  auto* header =
      makeSheetHeader(localized("manage_libraries", "Manage Libraries", "Manage libraries button"), close);
  setIdentifier(header->closeButton(), "manageLibraries.close");
  content->append(*header);

  auto* placeholder = makeSheetPlaceholder(
      "books.vertical", localized("no_libraries", "No libraries imported yet", "No libraries placeholder"));
  placeholder->set_size_request(-1, placeholderHeight);
  setIdentifier(*placeholder, "manageLibraries.empty");
  list_.set_selection_mode(Gtk::SelectionMode::NONE);
  list_.add_css_class("boxed-list");
  list_.set_margin(18);
  list_.set_valign(Gtk::Align::START);
  pages_.set_vhomogeneous(false);
  pages_.add(*placeholder, emptyPage);
  pages_.add(list_, listPage);
  content->append(pages_);
  setContent(*content, sheetWidth);
  setCloseRequest(close);

  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(screen_.isShowingManageLibrariesSheet);
  follow(screen_.libraries);
  follow(screen_.cachedFilteredMessages);
  follow(screen_.sidebarSelection);
  refresh();
}

void ManageLibrariesSheet::refresh() {
  if (!screen_.isShowingManageLibrariesSheet()) {
    dismiss();
    return;
  }
  const auto& libraries = screen_.libraries();
  pages_.set_visible_child(libraries.empty() ? emptyPage : listPage);
  if (!std::ranges::equal(ids_, libraries, {}, {}, &MBOXLibrary::id)) {
    makeRows();
  }
  for (std::size_t index = 0; index < rows_.size(); ++index) {
    const auto& library = libraries[index];
    rows_[index]->show(makeLibraryRow(library, screen_.messageCount(library.id),
                                      screen_.sidebarSelection() == SidebarSelection::library(library.id)));
  }
  present();
}

void ManageLibrariesSheet::makeRows() {
  while (auto* row = list_.get_row_at_index(0)) {
    list_.remove(*row);
  }
  rows_.clear();
  ids_.clear();
  for (const auto& library : screen_.libraries()) {
    const std::size_t index = rows_.size();
    ids_.push_back(library.id);
    rows_.push_back(
        Gtk::make_managed<LibraryRowView>([this, index](LibraryRowAction action) { act(index, action); }));
    auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
    row->set_activatable(false);
    row->set_focusable(false);
    row->set_child(*rows_.back());
    list_.append(*row);
  }
}

void ManageLibrariesSheet::act(std::size_t index, LibraryRowAction action) {
  const auto& libraries = screen_.libraries();
  if (index >= libraries.size()) {
    return;
  }
  const MBOXLibrary library = libraries[index];
  switch (action) {
    case LibraryRowAction::select:
      screen_.sidebarSelection.set(SidebarSelection::library(library.id));
      break;
    case LibraryRowAction::rename:
      screen_.requestRename(library);
      break;
    case LibraryRowAction::remove:
      screen_.requestDelete(library);
      break;
  }
}

}  // namespace tidewrack::ui
