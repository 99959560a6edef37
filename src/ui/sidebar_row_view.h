#pragma once

#include <gtkmm.h>

#include "ui/sidebar_item.h"

namespace tidewrack::ui {

/// One line of the sidebar, of any kind. It is given one item after another and follows the one it shows.
class SidebarRowView : public Gtk::Box {
 public:
  SidebarRowView();

  void show(const Glib::RefPtr<SidebarItem>& item);
  /// Lets go of the item.
  void forget();

 private:
  void refresh();
  void showRow(const SidebarRow& row);
  void showProgress(const CategorizingProgressRow& progress);

  Glib::RefPtr<SidebarItem> item_;
  sigc::connection changed_;
  Gtk::Stack kinds_;
  Gtk::Label heading_;
  Gtk::Box row_{Gtk::Orientation::HORIZONTAL, 10};
  Gtk::Image icon_;
  Gtk::Label title_;
  Gtk::Image cloud_;
  Gtk::Label badge_;
  Gtk::Box progress_{Gtk::Orientation::VERTICAL, 6};
  Gtk::Box progressLine_{Gtk::Orientation::HORIZONTAL, 8};
  Gtk::Spinner progressSpinner_;
  Gtk::Label progressText_;
  Gtk::ProgressBar progressBar_;
};

}  // namespace tidewrack::ui
