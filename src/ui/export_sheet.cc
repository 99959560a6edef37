#include "ui/export_sheet.h"

#include <algorithm>
#include <utility>

#include <adwaita.h>

#include "platform/desktop_services.h"
#include "ui/alerts.h"
#include "ui/sheet_header.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 42;
constexpr int margin = 24;

}  // namespace

ExportSheet::ExportSheet(ContentView& screen, Gtk::Widget& covered)
    : Sheet(covered), screen_(screen), panel_(covered) {
  desktop_.beginSavePanel = [this](ExportView::SavePanel request) { panel_.begin(std::move(request)); };
  desktop_.revealFile = [](const std::filesystem::path& file) { revealInFileManager(file); };

  auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 0);
  setIdentifier(*content, "export.root");
  auto* header = makeSheetHeader("Exportar", [this] { close(); });
  closeButton_ = &header->closeButton();
  setIdentifier(*closeButton_, "export.close");
  content->append(*header);
  content->append(*makeHead());
  content->append(*makeFormats());
  content->append(*Gtk::make_managed<Gtk::Separator>());
  content->append(*makeButtons());
  setContent(*content, idealWidth);
  content->set_size_request(idealWidth, minimumHeight);
  setCloseRequest([this] { close(); });
  setDefaultAction([this] {
    if (view_ && view_->canExport()) {
      view_->beginExport();
    }
  });
  followScreen();
}

ExportSheet::~ExportSheet() {
  if (view_) {
    view_->giveUp();
  }
}

Gtk::Widget* ExportSheet::makeHead() {
  auto* head = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
  head->set_margin(margin);
  head->set_margin_top(margin / 2);
  head->append(*makeSymbol("arrow.down.doc", iconSize, "blue"));
  auto* title = Gtk::make_managed<Gtk::Label>("Exportar Mensajes");
  title->add_css_class("status-title");
  head->append(*title);
  count_.add_css_class("row-secondary");
  setIdentifier(count_, "export.count");
  head->append(count_);
  size_.add_css_class("row-footer");
  setIdentifier(size_, "export.size");
  head->append(size_);
  return head;
}

Gtk::Widget* ExportSheet::makeFormats() {
  auto* section = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 8);
  section->set_margin_start(margin);
  section->set_margin_end(margin);
  section->set_margin_bottom(margin / 2);
  section->set_vexpand(true);
  section->append(*makeLabel("Selecciona el formato", {"heading"}));
  section->append(*makeLabel("Formato de exportación", {"row-footer"}));
  auto* list = Gtk::make_managed<Gtk::ListBox>();
  list->set_selection_mode(Gtk::SelectionMode::NONE);
  list->add_css_class("boxed-list");
  gtk_accessible_update_property(GTK_ACCESSIBLE(list->gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 "Formato de exportación", -1);
  Gtk::CheckButton* first = nullptr;
  for (const auto format : ExportUtility::allFormats) {
    const std::string extension = std::string(".") + ExportUtility::fileExtension(format);
    auto* choice = Gtk::make_managed<Gtk::CheckButton>();
    if (first == nullptr) {
      first = choice;
    } else {
      choice->set_group(*first);
    }
    choice->set_valign(Gtk::Align::CENTER);
    setIdentifier(*choice, std::string("export.format.") + ExportUtility::fileExtension(format));
    setAccessibleLabel(*choice, ExportUtility::title(format));
    choice->signal_toggled().connect([this, choice, format] {
      if (choice->get_active() && view_) {
        view_->selectedFormat.set(format);
      }
    });
    choices_.emplace(format, choice);
    GtkWidget* row = adw_action_row_new();
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), ExportUtility::title(format));
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), extension.c_str());
    adw_action_row_add_prefix(ADW_ACTION_ROW(row), GTK_WIDGET(choice->gobj()));
    adw_action_row_set_activatable_widget(ADW_ACTION_ROW(row), GTK_WIDGET(choice->gobj()));
    gtk_widget_set_focusable(row, FALSE);
    gtk_list_box_append(list->gobj(), row);
  }
  // The list has a cursor of its own, which would take these keys and go nowhere: its rows take no focus.
  const auto keys = Gtk::EventControllerKey::create();
  keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  keys->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        const bool isUp = key == GDK_KEY_Up || key == GDK_KEY_KP_Up;
        const bool isDown = key == GDK_KEY_Down || key == GDK_KEY_KP_Down;
        if (isUp || isDown) {
          chooseNeighbour(isDown);
        }
        return isUp || isDown;
      },
      false);
  list->add_controller(keys);
  section->append(*list);
  description_.add_css_class("row-footer");
  description_.set_xalign(0.0F);
  description_.set_wrap(true);
  setIdentifier(description_, "export.description");
  section->append(description_);
  return section;
}

void ExportSheet::chooseNeighbour(bool isNext) {
  const auto& formats = ExportUtility::allFormats;
  const auto* chosen = std::find(formats.begin(), formats.end(), view_->selectedFormat());
  const auto* edge = isNext ? formats.end() - 1 : formats.begin();
  if (!view_->isExporting() && chosen != edge) {
    view_->selectedFormat.set(isNext ? *(chosen + 1) : *(chosen - 1));
    choices_.at(view_->selectedFormat())->grab_focus();
  }
}

Gtk::Widget* ExportSheet::makeButtons() {
  auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 10);
  box->set_margin(margin / 2);
  box->set_margin_start(margin);
  box->set_margin_end(margin);
  setIdentifier(progress_, "export.progress");
  box->append(progress_);
  auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
  buttons->set_homogeneous(true);
  auto* cancel = Gtk::make_managed<Gtk::Button>("Cancelar");
  setIdentifier(*cancel, "export.cancel");
  cancel->signal_clicked().connect([this] { close(); });
  cancel->set_hexpand(true);
  buttons->append(*cancel);
  exportFace_.add(exportTitle_);
  exportFace_.add(spinner_);
  export_.set_child(exportFace_);
  export_.add_css_class("suggested-action");
  export_.set_hexpand(true);
  setIdentifier(export_, "export.export");
  setAccessibleLabel(export_, "Exportar");
  export_.signal_clicked().connect([this] { view_->beginExport(); });
  buttons->append(export_);
  box->append(*buttons);
  return box;
}

void ExportSheet::followScreen() {
  screenSubscriptions_.push_back(screen_.isShowingExport.observe([this] {
    if (!screen_.isShowingExport()) {
      end();
    } else if (!view_) {
      begin();
    }
  }));
  screenSubscriptions_.push_back(screen_.cachedFilteredMessages.observe([this] {
    if (view_) {
      view_->refreshSize();
      refresh();
    }
  }));
}

void ExportSheet::begin() {
  view_ = ExportView::create(screen_, desktop_);
  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(view_->selectedFormat);
  follow(view_->isExporting);
  follow(view_->progress);
  follow(view_->approximateSize);
  subscriptions_.push_back(view_->exportError.observe([this] { showError(); }));
  view_->refreshSize();
  refresh();
  present();
  choices_.at(view_->selectedFormat())->grab_focus();
}

// Whatever still runs is given up.
void ExportSheet::end() {
  subscriptions_.clear();
  if (const auto view = std::exchange(view_, nullptr)) {
    view->giveUp();
  }
  dismiss();
}

void ExportSheet::close() {
  if (view_) {
    view_->close();
  }
}

void ExportSheet::refresh() {
  const bool isExporting = view_->isExporting();
  const auto format = view_->selectedFormat();
  count_.set_text(view_->countText());
  size_.set_text(view_->sizeText());
  choices_.at(format)->set_active(true);
  description_.set_text(ExportView::formatDescription(format));
  for (const auto& [ignored, choice] : choices_) {
    choice->set_sensitive(!isExporting);
  }
  progress_.set_opacity(isExporting ? 1.0 : 0.0);
  progress_.set_fraction(view_->progress());
  closeButton_->set_sensitive(!isExporting);
  export_.set_sensitive(view_->canExport());
  spinner_.set_spinning(isExporting);
  exportFace_.set_visible_child(isExporting ? static_cast<Gtk::Widget&>(spinner_) : exportTitle_);
}

void ExportSheet::showError() {
  if (const auto& error = view_->exportError()) {
    showAlert(*this, "Error de Exportación", *error, [weak = std::weak_ptr(view_)] {
      if (const auto view = weak.lock()) {
        view->dismissError();
      }
    });
  }
}

}  // namespace tidewrack::ui
