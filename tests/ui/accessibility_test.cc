// Every control has a name that can be read out and can be reached by the keyboard, and the keyboard alone
// leads through the program.

#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/files.h"
#include "ui/keyboard.h"
#include "ui/main_menu.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

using testing::IsEmpty;

bool isControl(GtkWidget* widget) {
  return GTK_IS_BUTTON(widget) || GTK_IS_SWITCH(widget) || GTK_IS_ENTRY(widget) || GTK_IS_TEXT(widget) ||
         GTK_IS_SEARCH_ENTRY(widget) || GTK_IS_LIST_VIEW(widget) || GTK_IS_DROP_DOWN(widget) ||
         GTK_IS_MENU_BUTTON(widget) || GTK_IS_TEXT_VIEW(widget) || GTK_IS_EXPANDER(widget) ||
         GTK_IS_SPIN_BUTTON(widget) || GTK_IS_CHECK_BUTTON(widget);
}

bool takesFocus(GtkWidget* widget) {
  return gtk_widget_get_focusable(widget) != FALSE && gtk_widget_is_sensitive(widget) != FALSE &&
         gtk_widget_get_mapped(widget) != FALSE;
}

bool hasName(GtkWidget* widget) {
  auto* accessible = GTK_ACCESSIBLE(widget);
  if (gtk_test_accessible_has_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL) != FALSE ||
      gtk_test_accessible_has_relation(accessible, GTK_ACCESSIBLE_RELATION_LABELLED_BY) != FALSE) {
    return true;
  }
  if (GTK_IS_EXPANDER(widget)) {
    return gtk_expander_get_label_widget(GTK_EXPANDER(widget)) != nullptr;
  }
  return GTK_IS_BUTTON(widget) && gtk_button_get_label(GTK_BUTTON(widget)) != nullptr;
}

// The controls in a widget that take the focus, without what lies within another control.
std::vector<GtkWidget*> controls(GtkWidget* root) {
  std::vector<GtkWidget*> found;
  if (gtk_widget_get_mapped(root) == FALSE || gtk_widget_get_can_focus(root) == FALSE) {
    return found;
  }
  if (isControl(root) && takesFocus(root)) {
    found.push_back(root);
  }
  const bool isWhole = GTK_IS_SEARCH_ENTRY(root) || GTK_IS_ENTRY(root) || GTK_IS_LIST_VIEW(root) ||
                       GTK_IS_DROP_DOWN(root) || GTK_IS_SPIN_BUTTON(root) || GTK_IS_WINDOW_CONTROLS(root);
  for (GtkWidget* child = isWhole ? nullptr : gtk_widget_get_first_child(root); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    const auto below = controls(child);
    found.insert(found.end(), below.begin(), below.end());
  }
  return found;
}

class AccessibilityTest : public WindowTest {
 protected:
  GtkWindow* mainWindow() { return GTK_WINDOW(window_->window().gobj()); }

  std::vector<std::string> controlsWithoutName() {
    std::vector<std::string> nameless;
    for (GtkWidget* control : controls(GTK_WIDGET(mainWindow()))) {
      if (!hasName(control)) {
        nameless.push_back(describe(control));
      }
    }
    return nameless;
  }

  // Presses Tab all the way round and gives the controls on which the focus never came to rest.
  std::vector<std::string> controlsOutOfReach() {
    std::set<GtkWidget*> reached;
    for (int tabs = 0; tabs < 80; ++tabs) {
      for (GtkWidget* widget = focusedWidget(mainWindow()); widget != nullptr;
           widget = gtk_widget_get_parent(widget)) {
        reached.insert(widget);
      }
      Keyboard::press("Tab");
    }
    std::vector<std::string> missed;
    for (GtkWidget* control : controls(GTK_WIDGET(mainWindow()))) {
      if (!reached.contains(control)) {
        missed.push_back(describe(control));
      }
    }
    return missed;
  }

  // The desktop's file chooser gets the keyboard as soon as it is there.
  static bool focusFileChooser() {
    GtkWindow* chooser = nullptr;
    const bool isThere = runUntil([&chooser] {
      GList* windows = gtk_window_list_toplevels();
      for (GList* node = windows; node != nullptr; node = node->next) {
        if (GTK_IS_FILE_CHOOSER_DIALOG(node->data) &&
            gtk_widget_get_mapped(GTK_WIDGET(node->data)) != FALSE) {
          chooser = GTK_WINDOW(node->data);
        }
      }
      g_list_free(windows);
      return chooser != nullptr;
    });
    if (isThere) {
      Keyboard::focus(chooser);
    }
    return isThere;
  }

  static std::string mail() {
    return archivedMessage(
        "Message-ID: <m1@example.org>\nFrom: Ana <ana@example.org>\nTo: Ben <ben@example.org>\n"
        "Subject: Harbour\nDate: Thu, 1 Jan 2026 10:00:00 +0000\nX-Gmail-Labels: Inbox,Work\n"
        "Content-Type: multipart/mixed; boundary=b\n",
        "--b\n\nText\n--b\nContent-Type: application/pdf; name=\"plan.pdf\"\n"
        "Content-Disposition: attachment; filename=\"plan.pdf\"\n\nbytes\n--b--\n");
  }
  void openWithMail() {
    open();
    import(archive("mail.mbox", mail() + archivedMessage("Message-ID: <m0@example.org>\nSubject: Older\n"
                                                         "Date: Wed, 31 Dec 2025 10:00:00 +0000\n",
                                                         "x")));
    screen_->dismissImportStatus();
    runUntil([this] { return find("importStatus.panel") == nullptr; });
    runPending();
  }
};

TEST_F(AccessibilityTest, EveryControlOfTheFirstStartHasANameAndIsReachable) {
  open();
  Keyboard::focus(mainWindow());
  EXPECT_THAT(controlsWithoutName(), IsEmpty());
  EXPECT_THAT(controlsOutOfReach(), IsEmpty());
}

TEST_F(AccessibilityTest, EveryControlAroundAMessageHasANameAndIsReachable) {
  openWithMail();
  Keyboard::focus(mainWindow());
  auto* attachments = find<Gtk::Expander>("messageDetail.attachments");
  ASSERT_NE(attachments, nullptr);
  attachments->set_expanded(true);
  runPending();
  EXPECT_THAT(controlsWithoutName(), IsEmpty());
  EXPECT_THAT(controlsOutOfReach(), IsEmpty());
}

TEST_F(AccessibilityTest, EveryControlOfTheSettingsHasANameAndIsReachable) {
  open();
  Keyboard::focus(mainWindow());
  screen_->isShowingSettings.set(true);
  ASSERT_TRUE(runUntil([this] { return find("settings.root") != nullptr; }));
  runPending();
  EXPECT_THAT(controlsWithoutName(), IsEmpty());
  EXPECT_THAT(controlsOutOfReach(), IsEmpty());
}

TEST_F(AccessibilityTest, TheDocumentedIdentifiersAreThere) {
  openWithMail();
  for (const char* name : {"sidebar.allLibraries", "messages.list", "messages.searchField", "toolbar.import",
                           "toolbar.settings", "messages.row.m1@example.org"}) {
    EXPECT_NE(find(name), nullptr) << name;
  }
}

TEST_F(AccessibilityTest, TheKeyboardAloneLeadsFromTheWelcomeThroughAnImportToAnExport) {
  ui::setShortcuts(testApplication());
  const std::string file = archive("harbour.mbox", mail());
  open();
  Keyboard::focus(mainWindow());
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "welcome.importButton"));
  Keyboard::press("Return");
  ASSERT_TRUE(screen_->isPresentingImporter());

  // The desktop's file chooser takes a path that is typed.
  ASSERT_TRUE(focusFileChooser());
  Keyboard::press("l", "Control_L");
  Keyboard::press("a", "Control_L");
  Keyboard::type(file);
  Keyboard::press("Return");
  ASSERT_TRUE(runUntil([this] { return !screen_->isPresentingImporter(); }));

  // The report of the import has its button in focus.
  Keyboard::focus(mainWindow());
  ASSERT_TRUE(runUntil([this] {
    const auto& status = screen_->importStatus();
    return !screen_->isImporting() && status && status->showsDismissButton();
  }));
  runPending();
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "importStatus.dismiss"));
  Keyboard::press("Return");
  ASSERT_TRUE(runUntil([this] { return find("importStatus.panel") == nullptr; }));

  // The mail can be searched and read.
  Keyboard::press("f", "Control_L");
  Keyboard::type("harbour");
  ASSERT_TRUE(runUntil([this] { return screen_->searchText() == "harbour"; }));
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "messages.list"));
  Keyboard::press("Home");
  EXPECT_EQ(screen_->selectedMessageID(), Text("m1@example.org"));
  EXPECT_TRUE(Keyboard::tabTo(mainWindow(), "messageDetail.text"));

  // The settings open and close.
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "toolbar.settings"))
      << "the keyboard stays at " << describe(focusedWidget(mainWindow()));
  Keyboard::press("space");
  ASSERT_TRUE(runUntil([this] { return find("settings.root") != nullptr; }));
  EXPECT_TRUE(Keyboard::tabTo(mainWindow(), "settings.close"));
  Keyboard::press("Escape");
  EXPECT_TRUE(runUntil([this] { return find("settings.root") == nullptr; }));

  // What the list shows is exported: the sheet, a format, the file chooser, the file.
  const std::filesystem::path exported = folder_ / "harbour-again.mbox";
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "toolbar.export"));
  Keyboard::press("space");
  ASSERT_TRUE(runUntil([this] { return find("export.root") != nullptr; }));
  ASSERT_TRUE(Keyboard::tabTo(mainWindow(), "export.format.html"));
  for (int formats = 0; formats < 3; ++formats) {
    Keyboard::press("Down");
  }
  EXPECT_TRUE(find<Gtk::CheckButton>("export.format.mbox")->get_active());
  Keyboard::press("Return");
  ASSERT_TRUE(focusFileChooser());
  Keyboard::press("a", "Control_L");
  Keyboard::type(exported);
  Keyboard::press("Return");
  ASSERT_TRUE(runUntil([this] { return find("export.root") == nullptr; }));
  EXPECT_TRUE(readFile(exported).starts_with("From ana@example.org "));
  Keyboard::focus(mainWindow());
  EXPECT_TRUE(Keyboard::tabTo(mainWindow(), "messages.list")) << "the keyboard is back in the window";
}

}  // namespace
}  // namespace tidewrack
