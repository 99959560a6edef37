#include "ui/save_panel.h"

#include <utility>

#include "platform/files.h"

namespace tidewrack::ui {
namespace {

Glib::RefPtr<Gtk::FileFilter> makeFilter(ExportView::Format format) {
  const std::string extension = ExportUtility::fileExtension(format);
  auto filter = Gtk::FileFilter::create();
  filter->set_name(ExportUtility::title(format));
  filter->add_pattern("*." + extension);
  return filter;
}

}  // namespace

void SavePanel::begin(ExportView::SavePanel request) {
  request_ = std::move(request);
  show({}, request_.fileName);
}

void SavePanel::show(const std::filesystem::path& folder, const std::string& name) {
  auto* window = dynamic_cast<Gtk::Window*>(anchor_.get_root());
  if (window == nullptr) {
    request_.completion(std::nullopt);
    return;
  }
  chooser_ = Gtk::FileChooserNative::create("Exportar", *window, Gtk::FileChooser::Action::SAVE);
  chooser_->set_modal(true);
  chooser_->set_create_folders(true);
  if (!folder.empty()) {
    chooser_->set_current_folder(Gio::File::create_for_path(folder.string()));
  }
  chooser_->set_current_name(name);
  chooser_->add_filter(makeFilter(request_.format));
  chooser_->signal_response().connect([this](int response) { answered(response); });
  chooser_->show();
}

void SavePanel::answered(int response) {
  const auto file = chooser_->get_file();
  chooser_.reset();
  if (response != Gtk::ResponseType::ACCEPT || !file || file->get_path().empty()) {
    request_.completion(std::nullopt);
    return;
  }
  const std::filesystem::path chosen = file->get_path();
  const auto whole = withExportExtension(chosen, request_.format);
  if (whole != chosen && fileExists(whole)) {
    show(whole.parent_path(), whole.filename());  // Nobody has agreed yet to replace that file.
    return;
  }
  request_.completion(whole);
}

}  // namespace tidewrack::ui
