#pragma once

#include <functional>

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

  /// Whether `other` is the same line, with the same lines below it, apart from texts and counts.
  [[nodiscard]] bool isSameLine(const SidebarItem& other) const;
  /// Takes over the texts and counts of such a line.
  void take(const SidebarItem& other);

  sigc::signal<void()>& signalChanged() { return changed_; }

 protected:
  explicit SidebarItem(Kind kind);

 private:
  Kind kind_;
  std::string title_;
  SidebarRow row_;
  CategorizingProgressRow progress_;
  Glib::RefPtr<Gio::ListStore<SidebarItem>> children_;
  sigc::signal<void()> changed_;
};

}  // namespace tidewrack::ui
