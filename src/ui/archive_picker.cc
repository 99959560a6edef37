#include "ui/archive_picker.h"

#include <utility>
#include <variant>

#include "platform/localized.h"
#include "screen/toolbar.h"

namespace tidewrack::ui {
namespace {

Glib::RefPtr<Gtk::FileFilter> makeFilter(const std::string& name) {
  auto filter = Gtk::FileFilter::create();
  filter->set_name(name);
  return filter;
}

}  // namespace

ArchivePicker::ArchivePicker(Gtk::Window& window, ContentView& screen) : window_(window), screen_(screen) {
  subscription_ = screen_.isPresentingImporter.observe([this] {
    if (screen_.isPresentingImporter()) {
      show();
    }
  });
}

void ArchivePicker::show() {
  chooser_ = Gtk::FileChooserNative::create(importButtonTitle(), window_, Gtk::FileChooser::Action::OPEN);
  chooser_->set_modal(true);
  chooser_->set_select_multiple(true);
  // Any file may be an archive, whatever it is called, so nothing is filtered out at first.
  auto everything = makeFilter(localized("all_files_filter", "All Files", "File picker filter"));
  everything->add_pattern("*");
  auto archives = makeFilter(localized("mbox_files_filter", "MBOX Archives", "File picker filter"));
  archives->add_mime_type("application/mbox");
  archives->add_pattern("*.mbox");
  chooser_->add_filter(everything);
  chooser_->add_filter(archives);
  chooser_->signal_response().connect([this](int response) { answered(response); });
  chooser_->show();
}

void ArchivePicker::answered(int response) {
  std::vector<Glib::RefPtr<Gio::File>> files;
  if (response == Gtk::ResponseType::ACCEPT) {
    const auto chosen = chooser_->get_files();
    for (guint position = 0; position < chosen->get_n_items(); ++position) {
      // Files have no class of their own that gtkmm could wrap; only their interface has.
      files.push_back(Glib::wrap(G_FILE(g_list_model_get_item(chosen->gobj(), position))));
    }
  }
  chooser_.reset();
  screen_.isPresentingImporter.set(false);
  if (!files.empty()) {
    screen_.handleImportResult(importResult(files));
  }
}

ContentView::ImportResult importResult(const std::vector<Glib::RefPtr<Gio::File>>& files) {
  std::vector<std::filesystem::path> paths;
  for (const auto& file : files) {
    const std::string path = file->get_path();
    if (path.empty()) {
      return Failure(formatText(localized("import_no_local_file", "“%@” is not a file on this computer.",
                                          "A chosen file cannot be reached by a path"),
                                {std::string(file->get_parse_name())}));
    }
    paths.emplace_back(path);
  }
  return paths;
}

void openFiles(const std::vector<Glib::RefPtr<Gio::File>>& files, ContentView& screen) {
  auto result = importResult(files);
  if (auto* paths = std::get_if<std::vector<std::filesystem::path>>(&result)) {
    screen.openFiles(std::move(*paths));
  } else {
    screen.handleImportResult(std::move(result));
  }
}

}  // namespace tidewrack::ui
