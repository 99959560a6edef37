#pragma once

#include <array>
#include <vector>

#include <gtkmm.h>

#include "platform/observable.h"
#include "screen/content_view.h"
#include "ui/sidebar_item.h"

namespace tidewrack::ui {

/// The navigation column: the sections of the sidebar as one list, labels as an outline that folds. Follows
/// the screen's fields and writes the selection back.
class SidebarView : public Gtk::ScrolledWindow {
 public:
  explicit SidebarView(ContentView& screen);
  ~SidebarView() override;
  SidebarView(const SidebarView&) = delete;
  SidebarView& operator=(const SidebarView&) = delete;

 private:
  void observeScreen();
  void sectionsChanged(const std::vector<SidebarSection::Kind>& kinds);
  void scheduleSections(int priority);
  void showSections();
  void showSelection();
  void selectionChosen();
  [[nodiscard]] Glib::RefPtr<SidebarItem> itemAt(guint position) const;

  ContentView& screen_;
  Glib::RefPtr<Gio::ListStore<SidebarItem>> roots_;
  Glib::RefPtr<Gtk::TreeListModel> tree_;
  Glib::RefPtr<Gtk::SingleSelection> selection_;
  Gtk::ListView list_;
  // The lines of each section as they stand in the list, and whether they may have changed.
  struct Section {
    std::vector<Glib::RefPtr<SidebarItem>> items;
    bool isStale = true;
  };
  std::array<Section, allSidebarSections.size()> sections_;
  bool isUpdating_ = false;  ///< The selection moves because the screen's did.
  sigc::connection sectionsIdle_;
  sigc::connection selectionIdle_;
  std::vector<Subscription> subscriptions_;
};

}  // namespace tidewrack::ui
