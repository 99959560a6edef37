// Reading with the keyboard alone: real key presses through the display server.

#include <string>

#include "platform/files.h"
#include "ui/file_dialog.h"
#include "ui/keyboard.h"
#include "ui/main_menu.h"
#include "ui/page_support.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

// The newest first in the list: message 0.
std::string numberedMessage(int number, const std::string& type, const std::string& body) {
  char date[64];
  std::snprintf(date, sizeof date, "Thu, 1 Jan 2026 10:%02d:00 +0000", 59 - number);
  return archivedMessage("Message-ID: <k" + std::to_string(number) + "@example.org>\nSubject: Key " +
                             std::to_string(number) + "\nDate: " + date + "\nContent-Type: " + type + "\n",
                         body);
}

class ReadingKeysTest : public WindowTest {
 protected:
  void openWith(const std::string& bytes) {
    ui::setShortcuts(testApplication());
    open();
    import(archive("keys.mbox", bytes));
    screen_->dismissImportStatus();
    ASSERT_TRUE(runUntil([this] { return find("importStatus.panel") == nullptr; }));
    Keyboard::focus(mainWindow());
  }
  void openWithTenMessages(const std::string& type = "text/plain") {
    std::string bytes;
    for (int number = 0; number < 10; ++number) {
      bytes += numberedMessage(number, type, "<p id='p" + std::to_string(number) + "'>Body</p>");
    }
    openWith(bytes);
  }
  void openWithAttachment() {
    openWith(archivedMessage(
        "Message-ID: <a@example.org>\nSubject: Plan\nContent-Type: multipart/mixed; boundary=b\n",
        "--b\nContent-Type: text/plain\n\nText\n--b\nContent-Type: application/pdf\nContent-Disposition: "
        "attachment; filename=\"plan.pdf\"\nContent-Transfer-Encoding: base64\n\nJVBERgD/CgE=\n--b--\n"));
    find<Gtk::Expander>("messageDetail.attachments")->set_expanded(true);
    ASSERT_TRUE(runUntil([&] { return find("messageDetail.saveAttachment.0") != nullptr; }));
    ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "messageDetail.saveAttachment.0"));
  }
  static void waitForFileDialog() {
    ASSERT_TRUE(
        runUntil([] { return fileDialog() != nullptr && gtk_widget_get_mapped(fileDialog()) != FALSE; }));
  }
  static void typeIntoFileDialog(const std::filesystem::path& path) {
    waitForFileDialog();
    Keyboard::focus(GTK_WINDOW(fileDialog()));
    Keyboard::press("a", "Control_L");
    Keyboard::type(path.string());
    Keyboard::press("Return");
    ASSERT_TRUE(runUntil([] { return fileDialog() == nullptr; }));
  }
  GtkWindow* mainWindow() { return GTK_WINDOW(window_->window().gobj()); }
  WebKitWebView* page() { return window_->detail().htmlView()->webView(); }
  std::string selected() {
    return screen_->selectedMessageID() ? screen_->selectedMessageID()->string() : "";
  }
};

TEST_F(ReadingKeysTest, TheArrowKeysWalkThroughTheList) {
  openWithTenMessages();
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "messages.list"));
  Keyboard::press("Home");
  EXPECT_EQ(selected(), "k0@example.org");
  Keyboard::press("Down");
  EXPECT_EQ(selected(), "k1@example.org");
  Keyboard::press("Down");
  EXPECT_EQ(selected(), "k2@example.org");
  Keyboard::press("Up");
  EXPECT_EQ(selected(), "k1@example.org");
  Keyboard::press("End");
  EXPECT_EQ(selected(), "k9@example.org");
  EXPECT_EQ(find<Gtk::Label>("messageDetail.subject")->get_text(), "Key 9");
}

TEST_F(ReadingKeysTest, TheListKeepsTheArrowKeysWhilePagesOpen) {
  openWithTenMessages("text/html");
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "messages.list"));
  Keyboard::press("Home");
  for (int number = 1; number < 10; ++number) {
    Keyboard::press("Down");
    EXPECT_EQ(selected(), "k" + std::to_string(number) + "@example.org");
  }
  ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr; }));
  EXPECT_TRUE(runUntil([this] { return evaluate(page(), "!!document.getElementById('p9')") == "true"; }));
}

TEST_F(ReadingKeysTest, ControlAndFLeadsToTheSearchField) {
  openWithTenMessages();
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "messages.list"));
  Keyboard::press("f", "Control_L");
  Keyboard::type("key 3");
  EXPECT_TRUE(runUntil([this] { return screen_->searchText() == "key 3"; }));
}

TEST_F(ReadingKeysTest, ControlAndFWorksFromWithinAPage) {
  openWithTenMessages("text/html");
  ASSERT_TRUE(runUntil([this] { return find("messageDetail.html") != nullptr; }));
  find("messageDetail.html")->grab_focus();
  Keyboard::press("f", "Control_L");
  Keyboard::type("key 3");
  EXPECT_TRUE(runUntil([this] { return screen_->searchText() == "key 3"; }));
}

TEST_F(ReadingKeysTest, ControlWithPlusMinusAndZeroChangesTheSizeOfThePage) {
  openWithTenMessages("text/html");
  ASSERT_TRUE(runUntil([this] { return find("messageDetail.html") != nullptr; }));
  for (const char* place : {"messages.list", "messageDetail.html"}) {
    find(place)->grab_focus();
    Keyboard::press("plus", "Control_L");
    EXPECT_TRUE(runUntil([this] { return webkit_web_view_get_zoom_level(page()) > 1.05; }, 5)) << place;
    Keyboard::press("minus", "Control_L");
    Keyboard::press("minus", "Control_L");
    EXPECT_TRUE(runUntil([this] { return webkit_web_view_get_zoom_level(page()) < 0.95; }, 5)) << place;
    Keyboard::press("0", "Control_L");
    EXPECT_TRUE(runUntil([this] { return webkit_web_view_get_zoom_level(page()) == 1.0; }, 5)) << place;
  }
}

TEST_F(ReadingKeysTest, EscapeClosesASheet) {
  openWithTenMessages();
  screen_->isShowingAdvancedSearch.set(true);
  ASSERT_TRUE(runUntil([this] { return find("advancedSearch.root") != nullptr; }));
  Keyboard::press("Escape");
  EXPECT_TRUE(runUntil([this] { return !screen_->isShowingAdvancedSearch(); }, 10));
  EXPECT_TRUE(runUntil([this] { return find("advancedSearch.root") == nullptr; }, 10));
}

TEST_F(ReadingKeysTest, ControlAndSSavesTheFocusedAttachmentToTheTypedPlace) {
  openWithAttachment();
  Keyboard::press("s", "Control_L");
  const auto target = folder_ / "saved.pdf";
  typeIntoFileDialog(target);
  ASSERT_TRUE(runUntil([&] { return fileExists(target); }, 10));
  EXPECT_EQ(readFile(target), std::string("%PDF\0\xFF\n\x01", 8));
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(ReadingKeysTest, TheButtonOfAnAttachmentSavesItUnderItsName) {
  openWithAttachment();
  Keyboard::press("space");
  waitForFileDialog();
  auto* chooser = GTK_FILE_CHOOSER(fileDialog());
  GFile* folder = g_file_new_for_path(folder_.path().c_str());
  gtk_file_chooser_set_current_folder(chooser, folder, nullptr);
  g_object_unref(folder);
  Keyboard::focus(GTK_WINDOW(fileDialog()));
  Keyboard::press("Return");
  ASSERT_TRUE(runUntil([] { return fileDialog() == nullptr; }));
  const auto target = folder_ / "plan.pdf";
  ASSERT_TRUE(runUntil([&] { return fileExists(target); }, 10));
  EXPECT_EQ(readFile(target).size(), 8U);
}

TEST_F(ReadingKeysTest, EscapeInTheFileDialogSavesNothing) {
  openWithAttachment();
  Keyboard::press("s", "Control_L");
  waitForFileDialog();
  Keyboard::focus(GTK_WINDOW(fileDialog()));
  Keyboard::press("Escape");
  EXPECT_TRUE(runUntil([] { return fileDialog() == nullptr; }));
  letFlowsEnd();
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(ReadingKeysTest, APlaceThatCannotBeWrittenIsToldInAnAlert) {
  openWithAttachment();
  Keyboard::press("s", "Control_L");
  // Nobody can write there, whoever runs the tests.
  waitForFileDialog();
  GFile* folder = g_file_new_for_path("/proc");
  gtk_file_chooser_set_current_folder(GTK_FILE_CHOOSER(fileDialog()), folder, nullptr);
  g_object_unref(folder);
  gtk_dialog_response(GTK_DIALOG(fileDialog()), GTK_RESPONSE_ACCEPT);
  EXPECT_TRUE(runUntil([] { return alert() != nullptr; }, 10));
}

}  // namespace
}  // namespace tidewrack
