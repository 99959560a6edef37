#include <cstdlib>
#include <filesystem>
#include <string>

#include <adwaita.h>

#include "platform/desktop_services.h"
#include "platform/files.h"
#include "ui/window_fixture.h"
#include "ui/window_picture.h"

namespace tidewrack {
namespace {

std::string archiveOf(const std::string& prefix, int count) {
  std::string bytes;
  for (int number = 0; number < count; ++number) {
    const std::string id = prefix + std::to_string(number);
    bytes +=
        archivedMessage("Message-ID: <" + id + "@example.org>\nFrom: Ana <ana@example.org>\nSubject: " + id +
                            "\nDate: Thu, 1 Jan 2026 10:00:0" + std::to_string(number) + " +0000\n",
                        "Body of " + id);
  }
  return bytes;
}

class SheetsTest : public WindowTest {
 protected:
  void openWithMail() {
    open();
    import(archive("work.mbox", archiveOf("w", 3)));
    screen_->dismissImportStatus();
    import(archive("home.mbox", archiveOf("h", 2)));
    screen_->dismissImportStatus();
    screen_->sidebarSelection.set(std::nullopt);
    runPending();
  }
  bool isGone(const std::string& name) {
    return runUntil([this, &name] { return find(name) == nullptr; }, 10);
  }
  Gtk::Widget* row(const std::string& libraryName) {
    for (const auto& library : screen_->libraries()) {
      if (library.displayName == libraryName) {
        return find("library." + library.id.string());
      }
    }
    return nullptr;
  }
  void pressInRow(const std::string& libraryName, const std::string& name) {
    auto* found = row(libraryName);
    ASSERT_NE(found, nullptr);
    auto* button = dynamic_cast<Gtk::Button*>(findWidget(found->gobj(), name));
    ASSERT_NE(button, nullptr) << name;
    g_signal_emit_by_name(button->gobj(), "clicked");
    runPending();
  }
  /// Writes a picture of the window into the folder that the environment names, for whoever wants to look.
  void picture(const std::string& name) {
    if (const char* folder = std::getenv("TIDEWRACK_PICTURES")) {
      runUntil([] { return false; }, 1);
      EXPECT_TRUE(ui::writePicture(window_->window(), std::filesystem::path(folder) / (name + ".png")));
    }
  }
  Gtk::Widget* focus() { return window_->window().get_focus(); }
  bool hasFocusIn(const std::string& name) {
    auto* root = find(name);
    return root != nullptr && focus() != nullptr && (focus() == root || focus()->is_ancestor(*root));
  }
};

TEST_F(SheetsTest, TheToolbarOpensEachSheetAndEscapeOrItsButtonClosesIt) {
  open();
  EXPECT_FALSE(find("toolbar.manageLibraries")->get_sensitive()) << "there are no libraries";
  EXPECT_TRUE(find("toolbar.export")->get_sensitive());
  import(archive("work.mbox", archiveOf("w", 3)));
  screen_->dismissImportStatus();
  runPending();
  press("toolbar.manageLibraries");
  EXPECT_NE(find("manageLibraries.root"), nullptr);
  EXPECT_TRUE(hasFocusIn("manageLibraries.root"));
  press("manageLibraries.close");
  EXPECT_TRUE(isGone("manageLibraries.root"));
  EXPECT_FALSE(screen_->isShowingManageLibrariesSheet());
  press("toolbar.export");
  EXPECT_NE(find("export.root"), nullptr);
  EXPECT_TRUE(hasFocusIn("export.root"));
  press("export.cancel");
  EXPECT_TRUE(isGone("export.root"));
}

TEST_F(SheetsTest, TheListOfLibrariesShowsEachWithItsCount) {
  openWithMail();
  press("toolbar.manageLibraries");
  ASSERT_NE(row("work"), nullptr);
  ASSERT_NE(row("home"), nullptr);
  EXPECT_EQ(findWidget(row("work")->gobj(), "library.selected"), nullptr);
  pressInRow("work", "library.select");
  EXPECT_TRUE(runUntil([this] { return window_->list().model()->size() == 3; }));
  EXPECT_NE(findWidget(row("work")->gobj(), "library.selected"), nullptr);
  picture("manage-libraries");
}

TEST_F(SheetsTest, WithoutLibrariesTheListSaysSo) {
  open();
  screen_->isShowingManageLibrariesSheet.set(true);
  runPending();
  EXPECT_NE(find("manageLibraries.empty"), nullptr);
  picture("manage-libraries-empty");
}

TEST_F(SheetsTest, ALibraryIsRenamedThroughItsDialog) {
  openWithMail();
  press("toolbar.manageLibraries");
  pressInRow("work", "library.rename");
  GtkWindow* dialog = alert();
  ASSERT_NE(dialog, nullptr);
  auto* entry = dynamic_cast<Gtk::Entry*>(findWidget(GTK_WIDGET(dialog), "renameLibrary.name"));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->get_text(), "work");
  entry->set_text("  Office ");
  adw_message_dialog_response(ADW_MESSAGE_DIALOG(dialog), "save");
  gtk_window_close(dialog);
  ASSERT_TRUE(runUntil([this] { return row("Office") != nullptr; }));
  EXPECT_NE(find("toast"), nullptr);
  EXPECT_FALSE(screen_->libraryPendingRename());
}

TEST_F(SheetsTest, ClosingTheRenameDialogChangesNothing) {
  openWithMail();
  press("toolbar.manageLibraries");
  pressInRow("work", "library.rename");
  ASSERT_NE(alert(), nullptr);
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([this] { return !screen_->libraryPendingRename(); }));
  EXPECT_NE(row("work"), nullptr);
}

TEST_F(SheetsTest, ADeleteAsksFirstThenTellsHowItStandsAndEndsWithItsButton) {
  openWithMail();
  press("toolbar.manageLibraries");
  pressInRow("work", "library.delete");
  ASSERT_NE(find("confirmation.root"), nullptr);
  EXPECT_EQ(find<Gtk::Label>("confirmation.message")->get_text(),
            "Delete \"work\" and remove its imported messages?");
  EXPECT_TRUE(hasFocusIn("confirmation.root"));
  picture("delete-confirmation");
  press("confirmation.confirm");
  ASSERT_TRUE(runUntil([this] { return find("importStatus.dismiss") != nullptr; }));
  EXPECT_EQ(find("confirmation.root"), nullptr);
  EXPECT_EQ(find<Gtk::Label>("importStatus.title")->get_text(), "Library Deleted");
  EXPECT_EQ(row("work"), nullptr);
  picture("delete-success");
  press("importStatus.dismiss");
  EXPECT_TRUE(isGone("deletion.root"));
  EXPECT_FALSE(screen_->importStatus());
  EXPECT_NE(find("manageLibraries.root"), nullptr) << "it lies under the question";
  EXPECT_TRUE(find("manageLibraries.close")->is_sensitive());
  EXPECT_EQ(screen_->messages().size(), 2U);
}

TEST_F(SheetsTest, CancellingADeleteKeepsTheLibrary) {
  openWithMail();
  screen_->requestDelete(screen_->libraries().front());
  runPending();
  press("confirmation.cancel");
  EXPECT_TRUE(isGone("deletion.root"));
  EXPECT_FALSE(screen_->libraryPendingDeletion());
  EXPECT_EQ(screen_->libraries().size(), 2U);
}

TEST_F(SheetsTest, OnlyTheTopSheetTakesInput) {
  openWithMail();
  press("toolbar.manageLibraries");
  auto* below = find("manageLibraries.close");
  ASSERT_TRUE(below->child_focus(Gtk::DirectionType::TAB_FORWARD) || below->has_focus());
  screen_->requestDelete(screen_->libraries().front());
  runPending();
  EXPECT_TRUE(hasFocusIn("confirmation.root"));
  EXPECT_FALSE(below->grab_focus()) << "a covered sheet takes no keyboard";
  EXPECT_FALSE(window_->list().listView().grab_focus()) << "nor does the content";
  screen_->cancelDelete();
  runPending();
  EXPECT_TRUE(below->grab_focus());
  screen_->isShowingManageLibrariesSheet.set(false);
  runPending();
  EXPECT_TRUE(window_->list().listView().grab_focus());
}

TEST_F(SheetsTest, DiscoveredLibrariesHaveACardEachAndNoneIsSaid) {
  open();
  screen_->isShowingDiscoveredLibraries.set(true);
  runPending();
  EXPECT_NE(find("discoveredLibraries.empty"), nullptr);
  picture("discovered-libraries-empty");
  DiscoveredLibrary library;
  library.id = "far";
  library.displayName = "Far";
  library.messageCount = 3;
  library.labels = {"Inbox", "Work"};
  screen_->discoveredRemoteLibraries.set({library});
  runPending();
  EXPECT_EQ(find("discoveredLibraries.empty"), nullptr);
  EXPECT_NE(find("discoveredLibrary.far"), nullptr);
  picture("discovered-libraries");
  press("discoveredLibraries.close");
  EXPECT_TRUE(isGone("discoveredLibraries.root"));
}

class ExportSheetTest : public SheetsTest {
 protected:
  void present() {
    window_->exportSheet().setDesktop(
        {.beginSavePanel =
             [this](const ExportView::SavePanel& request) {
               suggested_ = request.fileName;
               request.completion(answer_);
             },
         .revealFile = [this](const std::filesystem::path& file) { revealed_ = file; }});
    press("toolbar.export");
  }

  std::optional<std::filesystem::path> answer_;
  std::string suggested_;
  std::filesystem::path revealed_;
};

TEST_F(ExportSheetTest, WithAnEmptyListTheSheetOpensAndCannotExport) {
  open();
  present();
  ASSERT_NE(find("export.root"), nullptr);
  EXPECT_EQ(find<Gtk::Label>("export.count")->get_text(), "0 mensajes seleccionados");
  EXPECT_FALSE(find("export.export")->is_sensitive());
}

TEST_F(ExportSheetTest, WritesTheChosenFormatAndShowsTheFile) {
  openWithMail();
  present();
  EXPECT_EQ(find<Gtk::Label>("export.count")->get_text(), "5 mensajes seleccionados");
  EXPECT_TRUE(runUntil([this] { return !find<Gtk::Label>("export.size")->get_text().empty(); }));
  EXPECT_TRUE(find<Gtk::CheckButton>("export.format.html")->get_active());
  find<Gtk::CheckButton>("export.format.mbox")->set_active(true);
  EXPECT_EQ(find<Gtk::Label>("export.description")->get_text(),
            "Formato estándar de correo, compatible con otros clientes de email");
  picture("export");
  answer_ = folder_ / "out.mbox";
  press("export.export");
  EXPECT_TRUE(isGone("export.root"));
  EXPECT_EQ(suggested_, "mensajes_export.mbox");
  EXPECT_EQ(revealed_, *answer_);
  EXPECT_TRUE(readFile(*answer_).starts_with("From ana@example.org "));
  present();
  EXPECT_TRUE(find<Gtk::CheckButton>("export.format.html")->get_active()) << "nothing is remembered";
}

TEST_F(ExportSheetTest, ACancelledFileDialogLeavesTheSheetOpen) {
  openWithMail();
  present();
  press("export.export");
  EXPECT_NE(find("export.root"), nullptr);
  EXPECT_EQ(alert(), nullptr);
  EXPECT_TRUE(find("export.export")->is_sensitive());
}

TEST_F(ExportSheetTest, AFailureIsToldInAnAlertAndTheSheetStays) {
  openWithMail();
  present();
  answer_ = folder_ / "missing/out.html";
  press("export.export");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  EXPECT_STREQ(adw_message_dialog_get_heading(ADW_MESSAGE_DIALOG(alert())), "Error de Exportación");
  EXPECT_TRUE(std::string(adw_message_dialog_get_body(ADW_MESSAGE_DIALOG(alert())))
                  .starts_with("Error al guardar: "));
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([this] { return !window_->exportSheet().state()->exportError(); }));
  EXPECT_NE(find("export.root"), nullptr);
}

// A file manager on the bus of the test that remembers what it was asked to show.
class FakeFileManager {
 public:
  FakeFileManager() {
    connection_ = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    const auto node = Gio::DBus::NodeInfo::create_for_xml(
        "<node><interface name='org.freedesktop.FileManager1'><method name='ShowItems'>"
        "<arg type='as' direction='in'/><arg type='s' direction='in'/></method></interface></node>");
    object_ = connection_->register_object("/org/freedesktop/FileManager1", node->lookup_interface(), table_);
    name_ = Gio::DBus::own_name(Gio::DBus::BusType::SESSION, "org.freedesktop.FileManager1", {},
                                [this](const auto&, const auto&) { isReady = true; });
  }
  ~FakeFileManager() {
    Gio::DBus::unown_name(name_);
    connection_->unregister_object(object_);
  }
  FakeFileManager(const FakeFileManager&) = delete;
  FakeFileManager& operator=(const FakeFileManager&) = delete;

  bool isReady = false;
  std::vector<Glib::ustring> shown;

 private:
  void called(const Glib::ustring& method, Glib::VariantContainerBase parameters,
              const Glib::RefPtr<Gio::DBus::MethodInvocation>& invocation) {
    if (method == "ShowItems") {
      shown =
          Glib::VariantBase::cast_dynamic<Glib::Variant<std::vector<Glib::ustring>>>(parameters.get_child(0))
              .get();
    }
    invocation->return_value({});
  }

  Gio::DBus::InterfaceVTable table_{
      [this](const auto&, const auto&, const auto&, const auto&, const Glib::ustring& method,
             const auto& parameters, const auto& invocation) { called(method, parameters, invocation); }};
  Glib::RefPtr<Gio::DBus::Connection> connection_;
  guint object_ = 0;
  guint name_ = 0;
};

TEST_F(SheetsTest, TheFileManagerIsAskedToShowTheFile) {
  FakeFileManager manager;
  ASSERT_TRUE(runUntil([&] { return manager.isReady; }, 10));
  revealInFileManager("/tmp/a folder/mensajes_export.csv");
  ASSERT_TRUE(runUntil([&] { return !manager.shown.empty(); }, 10));
  EXPECT_EQ(manager.shown, std::vector<Glib::ustring>{"file:///tmp/a%20folder/mensajes_export.csv"});
}

}  // namespace
}  // namespace tidewrack
