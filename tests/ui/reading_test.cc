// What the reader of a message can do in the window, beside looking at its page.

#include <filesystem>
#include <string>

#include <gtkmm.h>
#include <webkit/webkit.h>

#include "platform/files.h"
#include "reading/avatar_server.h"
#include "ui/avatar_view.h"
#include "ui/file_dialog.h"
#include "ui/main_menu.h"
#include "ui/page_support.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

std::string attachedMessage(const std::string& fileName) {
  return archivedMessage(
      "Message-ID: <a@example.org>\nFrom: Ana <ana@example.org>\nTo: Bo <bo@example.org>\nSubject: A\n"
      "Content-Type: multipart/mixed; boundary=b\n",
      "--b\nContent-Type: text/plain\n\nText\n--b\nContent-Type: application/pdf\nContent-Disposition: "
      "attachment; filename=\"" +
          fileName + "\"\nContent-Transfer-Encoding: base64\n\nJVBERg==\n--b--\n");
}

std::string suggestedName() {
  char* name = gtk_file_chooser_get_current_name(GTK_FILE_CHOOSER(fileDialog()));
  std::string result = name;
  g_free(name);
  return result;
}

void cancelDialog() {
  gtk_dialog_response(GTK_DIALOG(fileDialog()), GTK_RESPONSE_CANCEL);
  EXPECT_TRUE(runUntil([] { return fileDialog() == nullptr; }));
}

class ReadingTest : public WindowTest {
 protected:
  void openAttachment(const std::string& fileName) {
    open();
    import(archive("attached.mbox", attachedMessage(fileName)));
    screen_->dismissImportStatus();  // Its sheet keeps the keyboard.
    auto* expander = find<Gtk::Expander>("messageDetail.attachments");
    ASSERT_NE(expander, nullptr);
    expander->set_expanded(true);
    ASSERT_TRUE(runUntil([&] { return find("messageDetail.saveAttachment.0") != nullptr; }));
  }
};

TEST_F(ReadingTest, ControlAndSSavesTheAttachmentThatHasTheFocus) {
  openAttachment("plan.pdf");
  auto* button = find("messageDetail.saveAttachment.0");
  window_->window().set_focus(*button);
  ASSERT_TRUE(pressShortcut(*button, GDK_KEY_s, Gdk::ModifierType::CONTROL_MASK));
  ASSERT_TRUE(runUntil([] { return fileDialog() != nullptr; }));
  EXPECT_EQ(suggestedName(), "plan.pdf");
  cancelDialog();
}

TEST_F(ReadingTest, ControlAndSElsewhereSavesNothing) {
  openAttachment("plan.pdf");
  auto* expander = find("messageDetail.attachments");
  window_->window().set_focus(*expander);
  EXPECT_FALSE(pressShortcut(*expander, GDK_KEY_s, Gdk::ModifierType::CONTROL_MASK));
  EXPECT_EQ(fileDialog(), nullptr);
}

TEST_F(ReadingTest, TheSuggestedNameIsSafeAndTheStoredOneStaysAsItIs) {
  openAttachment("../../.profile");
  const std::string stored = screen_->selectedMessage()->attachments[0].fileName.string();
  EXPECT_NE(stored.find('/'), std::string::npos);
  dynamic_cast<Gtk::Button*>(find("messageDetail.saveAttachment.0"))->activate();
  ASSERT_TRUE(runUntil([] { return fileDialog() != nullptr; }));
  const std::string suggested = suggestedName();
  EXPECT_FALSE(suggested.empty());
  EXPECT_EQ(suggested.find('/'), std::string::npos);
  EXPECT_NE(suggested.front(), '.');
  cancelDialog();
}

TEST_F(ReadingTest, SubjectRowsAndTextCanBeSelected) {
  openAttachment("plan.pdf");
  auto* subject = find<Gtk::Label>("messageDetail.subject");
  ASSERT_NE(subject, nullptr);
  EXPECT_TRUE(subject->get_selectable());
  // The rows stand beside the subject.
  int rows = 0;
  for (auto* row = subject->get_parent()->get_next_sibling()->get_first_child(); row != nullptr;
       row = row->get_next_sibling()) {
    auto* label = dynamic_cast<Gtk::Label*>(row->get_last_child()->get_first_child());
    ASSERT_NE(label, nullptr);
    EXPECT_TRUE(label->get_selectable()) << label->get_text();
    ++rows;
  }
  EXPECT_EQ(rows, 3);  // From, To, Date
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.text") != nullptr; }));
  auto* text = find<Gtk::TextView>("messageDetail.text");
  EXPECT_FALSE(text->get_editable());
  text->get_buffer()->select_range(text->get_buffer()->begin(), text->get_buffer()->end());
  text->activate_action("clipboard.copy");
  std::string copied;
  text->get_clipboard()->read_text_async([&](const Glib::RefPtr<Gio::AsyncResult>& result) {
    copied = text->get_clipboard()->read_text_finish(result);
  });
  EXPECT_TRUE(runUntil([&] { return !copied.empty(); }, 10));
  EXPECT_EQ(copied, "Text");
}

TEST_F(ReadingTest, LongRowsAndManyLabelsOfTheHeadTakeTheLinesTheyNeed) {
  open();
  import(
      archive("long.mbox",
              archivedMessage("Message-ID: <long@example.org>\n"
                              "From: Wilhelmina Featherstonehaugh-Cholmondeley "
                              "<wilhelmina.featherstonehaugh@a-very-long-domain-name.example.org>\n"
                              "To: One Person <one@example.org>, Two Person <two@example.org>, Three Person "
                              "<three@example.org>, Four Person <four@example.org>\n"
                              "Subject: Long rows\n"
                              "X-Gmail-Labels: Inbox,Starred,Important,Family,Receipts,Friends,Newsletters,"
                              "Travel,Projects,Harbour,Pictures,Holidays,Neighbours\n"
                              "Content-Type: text/html\n",
                              "<p>Hello</p>\n")));
  screen_->dismissImportStatus();
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.backgroundPicker") != nullptr; }));
  runPending();
  auto* rows = find("messageDetail.rows");
  ASSERT_NE(rows, nullptr);
  int bottom = 0;
  int lines = 0;
  for (auto* row = rows->get_first_child(); row != nullptr; row = row->get_next_sibling()) {
    const auto place = row->get_allocation();
    int minimum = 0;
    int natural = 0;
    int ignored = 0;
    // The text itself is asked: a holder that had been measured wrongly would agree with its own height.
    auto* text = row->get_last_child()->get_first_child();
    text->measure(Gtk::Orientation::VERTICAL, text->get_width(), minimum, natural, ignored, ignored);
    EXPECT_GE(text->get_height(), natural);
    EXPECT_GE(place.get_y(), bottom);
    bottom = place.get_y() + place.get_height();
    ++lines;
  }
  EXPECT_EQ(lines, 3);
  auto* header = dynamic_cast<Gtk::ScrolledWindow*>(rows->get_ancestor(GTK_TYPE_SCROLLED_WINDOW));
  ASSERT_NE(header, nullptr);
  const auto range = header->get_vadjustment();
  EXPECT_EQ(range->get_page_size(), range->get_upper()) << "nothing of the head is scrolled away";
}

TEST_F(ReadingTest, TheZoomKeysChangeThePageAndTheText) {
  open();
  ui::setShortcuts(testApplication());
  EXPECT_EQ(testApplication().get_actions_for_accel("<Control>plus"),
            std::vector<Glib::ustring>{"win.zoom-in"});
  EXPECT_EQ(testApplication().get_actions_for_accel("<Control>minus"),
            std::vector<Glib::ustring>{"win.zoom-out"});
  EXPECT_EQ(testApplication().get_actions_for_accel("<Control>f"), std::vector<Glib::ustring>{"win.search"});
  import(archive("html.mbox",
                 archivedMessage("Message-ID: <h@example.org>\nContent-Type: text/html\n", "<p>page</p>")));
  ASSERT_TRUE(runUntil([&] { return window_->detail().htmlView() != nullptr; }));
  auto* view = window_->detail().htmlView()->webView();
  window_->window().activate_action("win.zoom-in");
  EXPECT_NEAR(webkit_web_view_get_zoom_level(view), 1.1, 1e-9);
  window_->window().activate_action("win.zoom-out");
  window_->window().activate_action("win.zoom-out");
  EXPECT_NEAR(webkit_web_view_get_zoom_level(view), 0.9, 1e-9);
  for (int step = 0; step < 40; ++step) {
    window_->window().activate_action("win.zoom-in");
  }
  EXPECT_NEAR(webkit_web_view_get_zoom_level(view), ui::HTMLView::maximumZoom, 1e-9);
  window_->window().activate_action("win.zoom-reset");
  EXPECT_NEAR(webkit_web_view_get_zoom_level(view), 1.0, 1e-9);

  window_->detail().detail().setDisplayMode(BodyDisplayMode::text);
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.text") != nullptr; }));
  const auto height = [&] {
    int width = 0;
    int lineHeight = 0;
    find("messageDetail.text")->create_pango_layout("A")->get_pixel_size(width, lineHeight);
    return lineHeight;
  };
  const int before = height();
  for (int step = 0; step < 5; ++step) {
    window_->window().activate_action("win.zoom-in");
  }
  EXPECT_TRUE(runUntil([&] { return height() > before; }, 10));
}

TEST_F(ReadingTest, TheMenuOfThePageOnlyCopies) {
  open();
  import(archive("html.mbox",
                 archivedMessage("Message-ID: <h@example.org>\nContent-Type: text/html\n", "<p>page</p>")));
  ASSERT_TRUE(runUntil([&] { return window_->detail().htmlView() != nullptr; }));
  WebKitContextMenu* menu = webkit_context_menu_new();
  for (const auto action :
       {WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK_IN_NEW_WINDOW, WEBKIT_CONTEXT_MENU_ACTION_COPY,
        WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_IMAGE_TO_DISK, WEBKIT_CONTEXT_MENU_ACTION_RELOAD,
        WEBKIT_CONTEXT_MENU_ACTION_INSPECT_ELEMENT}) {
    webkit_context_menu_append(menu, webkit_context_menu_item_new_from_stock_action(action));
  }
  gboolean isRefused = FALSE;
  g_signal_emit_by_name(window_->detail().htmlView()->webView(), "context-menu", menu, nullptr, &isRefused);
  EXPECT_FALSE(isRefused);
  ASSERT_EQ(webkit_context_menu_get_n_items(menu), 1U);
  EXPECT_EQ(webkit_context_menu_item_get_stock_action(webkit_context_menu_first(menu)),
            WEBKIT_CONTEXT_MENU_ACTION_COPY);
  g_object_unref(menu);
}

class AvatarViewTest : public WidgetTest {
 protected:
  TemporaryFolder folder_;
  Settings settings_{folder_ / "settings.ini"};
  AvatarServer server_;
  GravatarService service_{folder_ / "Gravatar", server_.url};
};

TEST_F(AvatarViewTest, ShowsInitialsUntilThePictureIsThere) {
  settings_.set(SettingKey::avatarGravatarEnabled, true);
  ui::AvatarView view(48, service_, settings_);
  view.show({Text("Ana Lee"), Text("ana@example.org")});
  auto* initials = dynamic_cast<Gtk::Label*>(view.get_first_child());
  auto* picture = dynamic_cast<Gtk::Picture*>(view.get_last_child());
  ASSERT_NE(initials, nullptr);
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(initials->get_text(), "AL");
  EXPECT_FALSE(picture->get_visible());
  ASSERT_TRUE(runUntil([&] { return picture->get_visible(); }));
  EXPECT_FALSE(initials->get_visible());
  EXPECT_NE(picture->get_paintable(), nullptr);
  settings_.set(SettingKey::avatarGravatarEnabled, false);
  EXPECT_TRUE(initials->get_visible());
  EXPECT_FALSE(picture->get_visible());
}

}  // namespace
}  // namespace tidewrack
