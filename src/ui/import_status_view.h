#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtkmm.h>

#include "status/import_status.h"

namespace tidewrack::ui {

/// The panel that shows how a long operation stands. It keeps its widgets while the status moves on, so that
/// a bar grows and a row changes its mark in place.
class ImportStatusView : public Gtk::Box {
 public:
  /// `isOverlay`: the panel lies over other content and brings its own card.
  ImportStatusView(bool isOverlay, std::function<void()> onDismiss);
  ~ImportStatusView() override;
  ImportStatusView(const ImportStatusView&) = delete;
  ImportStatusView& operator=(const ImportStatusView&) = delete;

  void show(const ImportStatus& status);
  /// Lets the Return key press the dismiss button, when the status has one.
  void focusDismissButton();

 private:
  struct DetailRow {
    std::string id;
    Gtk::Box* box;
    Gtk::Image* mark;
    Gtk::Label* text;
  };
  void showBar(const ImportStatus& status);
  void showDetails(const std::vector<StatusDetail>& details);
  void makeDetailRows(const std::vector<StatusDetail>& details);
  void bounce();

  std::function<void()> onDismiss_;
  std::optional<ImportStatus> status_;
  Gtk::Image icon_;
  Gtk::Label title_;
  Gtk::Label message_;
  Gtk::ProgressBar bar_;
  Gtk::Spinner spinner_;
  Gtk::Box details_{Gtk::Orientation::VERTICAL, StatusPanelMetrics::rowSpacing};
  std::vector<DetailRow> rows_;
  Gtk::Button dismiss_;
  std::string dismissTint_;
  sigc::connection bounceEnd_;
};

}  // namespace tidewrack::ui
