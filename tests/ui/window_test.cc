#include <fstream>
#include <sstream>
#include <string>

#include <adwaita.h>

#include "ui/body_text_view.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

std::string plainMessage(int number) {
  const std::string text = std::to_string(number);
  return archivedMessage("Message-ID: <m" + text +
                             "@example.org>\nFrom: Ana <ana@example.org>\nSubject: Subject " + text +
                             "\nDate: Thu, 1 Jan 2026 10:00:" + (number < 10 ? "0" : "") + text + " +0000\n",
                         "Body of " + text);
}

std::string plainArchive(int count) {
  std::string bytes;
  for (int number = 0; number < count; ++number) {
    bytes += plainMessage(number);
  }
  return bytes;
}

std::string bodyText(Gtk::Widget* widget) {
  auto* view = dynamic_cast<Gtk::TextView*>(widget);
  return view != nullptr ? view->get_buffer()->get_text().raw() : "no text view";
}

TEST_F(WindowTest, AFirstStartShowsTheWelcome) {
  open();
  EXPECT_NE(find("welcome.root"), nullptr);
  EXPECT_NE(find("welcome.importButton"), nullptr);
  EXPECT_NE(find("toolbar.import"), nullptr);
  EXPECT_NE(find("messageDetail.placeholder"), nullptr);
  EXPECT_EQ(find("messages.list"), nullptr);
}

TEST_F(WindowTest, TheWindowHasTheDocumentedSizes) {
  open();
  int width = 0;
  int height = 0;
  window_->window().get_default_size(width, height);
  EXPECT_EQ(width, 1200);
  EXPECT_EQ(height, 750);
  int minimum = 0;
  int natural = 0;
  int baseline = 0;
  window_->window().measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, baseline, baseline);
  EXPECT_GE(minimum, 980);
  EXPECT_LE(minimum, 1100);
}

TEST_F(WindowTest, AnImportedArchiveCanBeBrowsedAndRead) {
  open();
  import(archive("three.mbox", plainArchive(3)));
  EXPECT_EQ(find("welcome.root"), nullptr);
  ASSERT_NE(find("messages.list"), nullptr);
  EXPECT_EQ(window_->list().model()->size(), 3U);
  EXPECT_NE(find("messages.row.m2@example.org"), nullptr);
  EXPECT_NE(find("sidebar.allLibraries"), nullptr);
  EXPECT_NE(find("sidebar.library." + screen_->libraries().front().id.string()), nullptr);
  // The newest is selected and shown.
  EXPECT_EQ(screen_->selectedMessageID(), Text("m2@example.org"));
  auto* subject = find<Gtk::Label>("messageDetail.subject");
  ASSERT_NE(subject, nullptr);
  EXPECT_EQ(subject->get_text(), "Subject 2");
  EXPECT_TRUE(runUntil([&] { return find("messageDetail.text") != nullptr; }));
  EXPECT_EQ(bodyText(find("messageDetail.text")), "Body of 2");
}

TEST_F(WindowTest, TheListIsHeadedByWhatIsChosenAndTheNumberOfItsMessages) {
  open();
  auto* title = ADW_WINDOW_TITLE(find("messages.title")->gobj());
  EXPECT_STREQ(adw_window_title_get_title(title), "Messages");
  EXPECT_STREQ(adw_window_title_get_subtitle(title), "");
  import(archive("three.mbox", plainArchive(3)));
  EXPECT_STREQ(adw_window_title_get_title(title), "three");
  EXPECT_STREQ(adw_window_title_get_subtitle(title), "3 messages");
  EXPECT_EQ(window_->window().get_title(), "three");
  screen_->sidebarSelection.set(SidebarSelection::mailbox(GmailSystemMailbox::starred));
  runPending();
  EXPECT_STREQ(adw_window_title_get_title(title), "Starred");
  EXPECT_STREQ(adw_window_title_get_subtitle(title), "0 messages");
}

TEST_F(WindowTest, SelectingARowShowsItsMessage) {
  open();
  import(archive("three.mbox", plainArchive(3)));
  auto selection = std::dynamic_pointer_cast<Gtk::SingleSelection>(window_->list().listView().get_model());
  ASSERT_NE(selection, nullptr);
  selection->set_selected(2);
  EXPECT_EQ(screen_->selectedMessageID(), Text("m0@example.org"));
  EXPECT_TRUE(runUntil([&] { return bodyText(find("messageDetail.text")) == "Body of 0"; }));
  EXPECT_EQ(find<Gtk::Label>("messageDetail.subject")->get_text(), "Subject 0");
}

TEST_F(WindowTest, TheStatusSheetStaysUntilItsButtonIsPressed) {
  open();
  import(archive("one.mbox", plainArchive(1)));
  ASSERT_NE(find("importStatus.panel"), nullptr);
  EXPECT_EQ(find<Gtk::Label>("importStatus.title")->get_text(), "Import Successful");
  auto* button = find<Gtk::Button>("importStatus.dismiss");
  ASSERT_NE(button, nullptr);
  button->activate();
  EXPECT_TRUE(runUntil([&] { return find("importStatus.panel") == nullptr; }));
  EXPECT_FALSE(screen_->showImportStatusSheet());
  EXPECT_EQ(screen_->importStatus(), std::nullopt);
}

TEST_F(WindowTest, TheMailIsStillThereAfterARestart) {
  open();
  import(archive("five.mbox", plainArchive(5)));
  ASSERT_TRUE(runUntil([&] { return !screen_->searchIndex().empty(); }));  // No flow holds the store.
  close();
  open();
  ASSERT_TRUE(runUntil([&] { return window_->list().model()->size() == 5; }));
  EXPECT_TRUE(runUntil([&] { return bodyText(find("messageDetail.text")) == "Body of 4"; }));
}

TEST_F(WindowTest, AFileThatCannotBeReadIsToldInAnAlert) {
  open();
  import(folder_ / "missing.mbox");
  ASSERT_TRUE(screen_->importErrorMessage().has_value());
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  // Closing it clears only that field.
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([&] { return !screen_->importErrorMessage().has_value(); }));
  EXPECT_TRUE(screen_->showImportStatusSheet());
  EXPECT_NE(find("importStatus.panel"), nullptr);
}

TEST_F(WindowTest, AnEmptyListShowsItsPlaceholderAndTheSearchFieldStays) {
  open();
  import(archive("three.mbox", plainArchive(3)));
  auto* search = find<Gtk::SearchEntry>("messages.searchField");
  ASSERT_NE(search, nullptr);
  search->set_text("nothing has this word");
  ASSERT_TRUE(runUntil([&] { return find("messages.empty") != nullptr; }));
  EXPECT_NE(find("messages.searchField"), nullptr);
  // A search does not reselect: the detail goes on showing a message that has left the list.
  EXPECT_EQ(screen_->selectedMessageID(), Text("m2@example.org"));
  search->set_text("");
  EXPECT_TRUE(runUntil([&] { return window_->list().model()->size() == 3; }));
}

TEST_F(WindowTest, ChoosingInTheSidebarFiltersTheList) {
  open();
  import(archive("first.mbox", plainArchive(2)));
  screen_->dismissImportStatus();
  screen_->sidebarSelection.set(SidebarSelection::allLibraries());
  import(archive("second.mbox", archivedMessage("Message-ID: <other@example.org>\nSubject: Other\n", "x")));
  EXPECT_TRUE(runUntil([&] { return window_->list().model()->size() == 1; }));
  auto* sidebar = find<Gtk::ListView>("sidebar.list");
  ASSERT_NE(sidebar, nullptr);
  auto selection = std::dynamic_pointer_cast<Gtk::SingleSelection>(sidebar->get_model());
  selection->set_selected(1);  // behind the heading: all libraries
  EXPECT_EQ(screen_->sidebarSelection(), SidebarSelection::allLibraries());
  EXPECT_TRUE(runUntil([&] { return window_->list().model()->size() == 3; }));
}

TEST_F(WindowTest, AToastComesAndGoes) {
  open();
  screen_->showToast({"Something happened", ToastType::info, 0.2});
  EXPECT_TRUE(runUntil([&] { return find("toast") != nullptr; }));
  EXPECT_TRUE(runUntil([&] { return find("toast") == nullptr; }));
}

TEST_F(WindowTest, TheImportButtonRestsWhileAnImportRuns) {
  open();
  EXPECT_TRUE(find("toolbar.import")->get_sensitive());
  screen_->isImporting.set(true);
  EXPECT_FALSE(find("toolbar.import")->get_sensitive());
  EXPECT_EQ(find("welcome.root"), nullptr);
  screen_->isImporting.set(false);
  EXPECT_TRUE(find("toolbar.import")->get_sensitive());
}

TEST_F(WindowTest, AMessageWithoutHTMLHasNoPickers) {
  open();
  import(archive("one.mbox", plainArchive(1)));
  EXPECT_EQ(find("messageDetail.bodyPicker"), nullptr);
  EXPECT_EQ(find("messageDetail.backgroundPicker"), nullptr);
}

TEST_F(WindowTest, ATextBodyOfFiftyMegabytesIsLaidOutAsFarAsItIsRead) {
  open();
  std::string body;
  while (body.size() < 50'000'000) {
    body += "The harbour master writes it all down, line after line.\n";
  }
  import(archive("big.mbox", archivedMessage("Message-ID: <big@example.org>\nSubject: Big\n", body)));
  auto& text = window_->detail().textView();
  ASSERT_TRUE(runUntil([&] { return text.shownBytes() > 0; }));
  runPending();
  EXPECT_LT(text.shownBytes(), 2'000'000U);
  const auto before = text.shownBytes();
  const auto adjustment = text.get_vadjustment();
  adjustment->set_value(adjustment->get_upper());
  EXPECT_TRUE(runUntil([&] { return text.shownBytes() > before; }));
}

TEST_F(WindowTest, AHundredRecipientsAndALongSubjectDoNotStopTheWindow) {
  open();
  std::string recipients;
  for (int number = 0; number < 5000; ++number) {
    recipients +=
        "\"Person " + std::to_string(number) + "\" <person" + std::to_string(number) + "@example.org>, ";
  }
  import(archive("many.mbox",
                 archivedMessage("Message-ID: <many@example.org>\nSubject: " + std::string(1'000'000, 'x') +
                                     "\nTo: " + recipients + "last@example.org\n",
                                 "short")));
  EXPECT_TRUE(runUntil([&] { return bodyText(find("messageDetail.text")) == "short"; }, 20));
}

TEST_F(WindowTest, AttachmentsAreListedUnderTheBody) {
  open();
  import(archive(
      "attached.mbox",
      archivedMessage("Message-ID: <a@example.org>\nSubject: A\nContent-Type: multipart/mixed; boundary=b\n",
                      "--b\n\nText\n--b\nContent-Type: application/pdf; name=\"plan.pdf\"\n"
                      "Content-Disposition: attachment; filename=\"plan.pdf\"\n"
                      "Content-Transfer-Encoding: base64\n\nJVBERg==\n--b--\n")));
  auto* expander = find<Gtk::Expander>("messageDetail.attachments");
  ASSERT_NE(expander, nullptr);
  EXPECT_FALSE(expander->get_expanded());
  expander->set_expanded(true);
  EXPECT_TRUE(runUntil([&] { return find("messageDetail.saveAttachment.0") != nullptr; }));
  // Saving writes the decoded bytes.
  const std::string target = folder_ / "saved.pdf";
  window_->detail().detail().saveAttachment(screen_->selectedMessage()->attachments[0], target);
  EXPECT_TRUE(runUntil([&] { return std::ifstream(target).good(); }));
  std::stringstream saved;
  saved << std::ifstream(target).rdbuf();
  EXPECT_EQ(saved.str(), "%PDF");
}

TEST_F(WindowTest, AFailureToSaveAnAttachmentIsToldInAnAlert) {
  open();
  import(archive(
      "attached.mbox",
      archivedMessage("Message-ID: <a@example.org>\nSubject: A\nContent-Type: multipart/mixed; boundary=b\n",
                      "--b\nContent-Disposition: attachment; filename=x\n\nbytes\n--b--\n")));
  window_->detail().detail().saveAttachment(screen_->selectedMessage()->attachments[0],
                                            folder_ / "no such folder/x");
  ASSERT_TRUE(runUntil([] { return alert() != nullptr; }));
  gtk_window_close(alert());
  EXPECT_TRUE(runUntil([&] { return !window_->detail().detail().saveErrorMessage().has_value(); }));
}

}  // namespace
}  // namespace tidewrack
