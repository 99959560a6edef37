#pragma once

#include <string>

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
  void showHeading(const std::string& title);
  void showRow(const SidebarRow& row);
  void showProgress(const CategorizingProgressRow& progress);
  void showAlone(Gtk::Widget& line);
  void makeHeading();
  void makeRow();
  void makeProgress();

  Glib::RefPtr<SidebarItem> item_;
  sigc::connection changed_;
  // The widgets of each kind, made when a line first needs them; two hundred lines live at a time.
  Gtk::Label* heading_ = nullptr;
  Gtk::Box* row_ = nullptr;
  Gtk::Image* icon_ = nullptr;
  Gtk::Label* title_ = nullptr;
  Gtk::Image* cloud_ = nullptr;
  Gtk::Label* badge_ = nullptr;
  Gtk::Box* progress_ = nullptr;
  Gtk::Spinner* progressSpinner_ = nullptr;
  Gtk::Label* progressText_ = nullptr;
  Gtk::ProgressBar* progressBar_ = nullptr;
};

}  // namespace tidewrack::ui
