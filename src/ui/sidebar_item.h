#pragma once

#include <string>
#include <vector>

#include <gtkmm.h>

#include "screen/sidebar.h"

namespace tidewrack::ui {

/// What one line of the sidebar stands for: the title of a section, a row, or the categoriser's progress.
/// A row keeps its item while only its badge or its texts change; `changed` then tells the bound line.
class SidebarItem : public Glib::Object {
 public:
  enum class Kind { heading, row, progress };

  static Glib::RefPtr<SidebarItem> heading(const std::string& title);
  static Glib::RefPtr<SidebarItem> row(const SidebarRow& row);
  static Glib::RefPtr<SidebarItem> progress(const CategorizingProgressRow& progress);

  [[nodiscard]] Kind kind() const { return kind_; }
  [[nodiscard]] const std::string& title() const { return title_; }
  [[nodiscard]] const SidebarRow& row() const { return row_; }
  [[nodiscard]] const CategorizingProgressRow& progress() const { return progress_; }
  /// The items below a row, or null for a row without any.
  [[nodiscard]] const Glib::RefPtr<Gio::ListStore<SidebarItem>>& children() const { return children_; }

  /// What the line stands for: equal for lines that differ in texts and counts alone.
  [[nodiscard]] const std::string& key() const { return key_; }
  /// Puts the wanted lines into `store`. A line that is there already stays the same object, takes over the
  /// texts and counts and brings the lines below it in line in turn; `wanted` then holds that object. So a
  /// list that shows the store keeps its folding and its scroll position.
  static void bringInLine(Gio::ListStore<SidebarItem>& store, std::vector<Glib::RefPtr<SidebarItem>>& wanted);

  sigc::signal<void()>& signalChanged() { return changed_; }

 protected:
  explicit SidebarItem(Kind kind);

 private:
  [[nodiscard]] bool isSameLine(const SidebarItem& other) const;
  void take(const SidebarItem& other);
  static bool takeInPlace(const std::vector<Glib::RefPtr<SidebarItem>>& present,
                          std::vector<Glib::RefPtr<SidebarItem>>& wanted);

  Kind kind_;
  std::string key_;
  std::string title_;
  SidebarRow row_;
  CategorizingProgressRow progress_;
  Glib::RefPtr<Gio::ListStore<SidebarItem>> children_;
  sigc::signal<void()> changed_;
};

}  // namespace tidewrack::ui
