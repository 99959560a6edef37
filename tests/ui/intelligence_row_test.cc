// The model's row under the badges, over a model that answers when the test says so.

#include <coroutine>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <adwaita.h>

#include "ui/keyboard.h"
#include "ui/style.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

class FakeModel : public IntelligenceService {
 public:
  [[nodiscard]] Availability checkAvailability() const override {
    return {Availability::Kind::available, {}};
  }
  Task<EmailCategory> detectCategory(std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await Answer{*this};
    throwIfFailing();
    co_return EmailCategory::travel;
  }
  Task<Sentiment> analyzeSentiment(std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await Answer{*this};
    throwIfFailing();
    co_return Sentiment::negative;
  }
  Task<std::string> summarize(std::shared_ptr<const EmailMessage> message) override {
    co_await Answer{*this};
    throwIfFailing();
    co_return summary + message->subject.string();
  }
  Task<std::vector<ReplySuggestion>> generateReplySuggestions(
      std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await Answer{*this};
    throwIfFailing();
    std::vector<ReplySuggestion> replies;
    replies.push_back(
        {UUID::make(), "Thank you for the plan. We shall be at the quay at nine.", "professional"});
    replies.push_back({UUID::make(), "See you at nine!", "casual"});
    replies.push_back({UUID::make(), "Yes.", "brief"});
    co_return replies;
  }

  /// Lets every operation go on that waits for its answer.
  void answer() {
    for (const auto waiting : std::exchange(waiting_, {})) {
      waiting.resume();
    }
  }
  [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }

  bool fails = false;
  std::string summary = "The boat leaves at ten. About ";

 private:
  struct Answer {
    FakeModel& model;
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) const { model.waiting_.push_back(waiting); }
    void await_resume() const noexcept {}
  };
  void throwIfFailing() const {
    if (fails) {
      throw IntelligenceError(IntelligenceError::Kind::emptyResponse);
    }
  }

  std::vector<std::coroutine_handle<>> waiting_;
};

std::string mail(const std::string& id, const std::string& subject) {
  return archivedMessage("Message-ID: <" + id + "@example.org>\nFrom: Ana Lee <ana@example.org>\nSubject: " +
                             subject + "\nDate: Thu, 1 Jan 2026 10:00:00 +0000\nX-Gmail-Labels: Inbox,Work\n",
                         "We leave at ten.");
}

class IntelligenceRowTest : public WindowTest {
 protected:
  IntelligenceRowTest() {
    service_ = &model_;
    settings_.set(SettingKey::enableSentimentAnalysis, true);
  }
  ~IntelligenceRowTest() override {
    model_.answer();
    close();  // Before the model goes.
  }

  void openWithMail() {
    open();
    import(archive("mail.mbox", mail("a", "Harbour") + mail("b", "Lighthouse")));
    screen_->dismissImportStatus();
    select("a");
  }
  void select(const std::string& id) {
    screen_->selectedMessageID.set(Text(id + "@example.org"));
    runPending();
  }
  // What a chip shows while the model works.
  bool isRunning(const std::string& name) {
    auto* chip = find<Gtk::Button>(name);
    return chip != nullptr && !chip->is_sensitive() && spins(GTK_WIDGET(chip->gobj()));
  }
  static bool spins(GtkWidget* widget) {
    if (GTK_IS_SPINNER(widget)) {
      return gtk_widget_get_visible(widget) != FALSE &&
             gtk_spinner_get_spinning(GTK_SPINNER(widget)) != FALSE;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
      if (spins(child)) {
        return true;
      }
    }
    return false;
  }
  std::string text(const std::string& name) {
    auto* label = find<Gtk::Label>(name);
    return label != nullptr ? label->get_text().raw() : "none";
  }
  // A picture of the display, popovers and all, when somebody wants to look.
  void picture(const std::string& name) {
    if (const char* folder = std::getenv("TIDEWRACK_PICTURES")) {
      runUntil([] { return false; }, 1);
      const std::string command =
          "import -window root " + (std::filesystem::path(folder) / (name + ".png")).string();
      EXPECT_EQ(std::system(command.c_str()), 0);
    }
  }

  FakeModel model_;
};

TEST_F(IntelligenceRowTest, WithoutAModelTheRowIsNotShown) {
  service_ = &intelligence_;
  openWithMail();
  EXPECT_EQ(find("intelligence.row"), nullptr);
}

TEST_F(IntelligenceRowTest, EachItemStandsThereWhenItsOwnSettingIsOn) {
  openWithMail();
  for (const char* name : {"intelligence.row", "intelligence.summary", "intelligence.detectCategory",
                           "intelligence.analyzeSentiment", "intelligence.replies"}) {
    EXPECT_NE(find(name), nullptr) << name;
  }
  settings_.set(SettingKey::enableSmartSummaries, false);
  EXPECT_EQ(find("intelligence.summary"), nullptr);
  settings_.set(SettingKey::enableCategoryDetection, false);
  EXPECT_EQ(find("intelligence.detectCategory"), nullptr);
  settings_.set(SettingKey::enableSentimentAnalysis, false);
  EXPECT_EQ(find("intelligence.analyzeSentiment"), nullptr);
  EXPECT_NE(find("intelligence.replies"), nullptr);
  settings_.set(SettingKey::enableSmartReply, false);
  EXPECT_EQ(find("intelligence.row"), nullptr);
}

TEST_F(IntelligenceRowTest, TheSummaryChipRunsShowsItsAnswerAndRunsAgain) {
  openWithMail();
  picture("intelligence-row");
  press("intelligence.summary");
  EXPECT_TRUE(isRunning("intelligence.summary"));
  EXPECT_EQ(find("intelligence.summaryPopover"), nullptr);
  picture("intelligence-running");
  model_.answer();
  ASSERT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") != nullptr; }));
  EXPECT_EQ(text("intelligence.summaryText"), "The boat leaves at ten. About Harbour");
  EXPECT_FALSE(isRunning("intelligence.summary"));
  picture("intelligence-summary");

  model_.summary = "Be early. About ";
  press("intelligence.summarizeAgain");
  EXPECT_TRUE(isRunning("intelligence.summary"));
  EXPECT_FALSE(find("intelligence.summarizeAgain")->is_sensitive());
  model_.answer();
  EXPECT_EQ(text("intelligence.summaryText"), "Be early. About Harbour");

  // A press on the chip of a known summary opens it and asks nobody.
  window_->detail().detail().showSummaryPopover.set(false);
  ASSERT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") == nullptr; }));
  press("intelligence.summary");
  EXPECT_EQ(model_.waiting(), 0U);
  EXPECT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") != nullptr; }));
}

TEST_F(IntelligenceRowTest, ALongSummaryScrolls) {
  openWithMail();
  for (int line = 0; line < 300; ++line) {
    model_.summary += "The harbour master writes it all down. ";
  }
  press("intelligence.summary");
  model_.answer();
  ASSERT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") != nullptr; }));
  runUntil([this] { return find("intelligence.summaryPopover")->get_height() > 0; });
  EXPECT_LT(find("intelligence.summaryPopover")->get_height(), 600);
  EXPECT_LT(find("intelligence.summaryPopover")->get_width(), 360);
  picture("intelligence-long-summary");
}

TEST_F(IntelligenceRowTest, ClosingThePopoverIsRemembered) {
  openWithMail();
  press("intelligence.summary");
  model_.answer();
  auto* popover = find<Gtk::Popover>("intelligence.summaryPopover");
  ASSERT_NE(popover, nullptr);
  popover->popdown();
  EXPECT_FALSE(window_->detail().detail().showSummaryPopover());
}

TEST_F(IntelligenceRowTest, TheCategoryChipGivesWayToTheCategory) {
  openWithMail();
  EXPECT_EQ(find("intelligence.category"), nullptr);
  press("intelligence.detectCategory");
  EXPECT_TRUE(isRunning("intelligence.detectCategory"));
  model_.answer();
  EXPECT_EQ(find("intelligence.detectCategory"), nullptr);
  auto* category = find("intelligence.category");
  ASSERT_NE(category, nullptr);
  EXPECT_TRUE(category->has_css_class(ui::tintClass("purple")));
  EXPECT_EQ(dynamic_cast<Gtk::Label*>(category->get_last_child())->get_text(), "Travel");
}

TEST_F(IntelligenceRowTest, TheToneChipGivesWayToItsFace) {
  openWithMail();
  press("intelligence.analyzeSentiment");
  EXPECT_TRUE(isRunning("intelligence.analyzeSentiment"));
  model_.answer();
  EXPECT_EQ(find("intelligence.analyzeSentiment"), nullptr);
  auto* face = find<Gtk::Image>("intelligence.sentiment");
  ASSERT_NE(face, nullptr);
  EXPECT_EQ(face->get_icon_name(), "tw-emoji-frown-fill-symbolic");
  EXPECT_TRUE(face->has_css_class(ui::tintClass("red")));
  EXPECT_EQ(face->get_tooltip_text(), "Tone: Negative");
}

TEST_F(IntelligenceRowTest, TheRepliesChipShowsThreeRepliesThatCanBeCopied) {
  openWithMail();
  press("intelligence.replies");
  EXPECT_TRUE(isRunning("intelligence.replies"));
  model_.answer();
  ASSERT_TRUE(runUntil([this] { return find("intelligence.copyReply.brief") != nullptr; }));
  EXPECT_FALSE(isRunning("intelligence.replies"));
  picture("intelligence-replies");
  const auto icon = [this] {
    return dynamic_cast<Gtk::Image*>(find<Gtk::Button>("intelligence.copyReply.casual")->get_child())
        ->get_icon_name();
  };
  EXPECT_EQ(find("intelligence.copyReply.casual")->get_tooltip_text(), "Copiar al portapapeles");
  EXPECT_EQ(icon(), "tw-files-symbolic");
  press("intelligence.copyReply.casual");
  EXPECT_EQ(icon(), "tw-check-lg-symbolic");
  std::string copied;
  auto clipboard = window_->window().get_clipboard();
  clipboard->read_text_async(
      [&](const Glib::RefPtr<Gio::AsyncResult>& result) { copied = clipboard->read_text_finish(result); });
  EXPECT_TRUE(runUntil([&] { return !copied.empty(); }, 10));
  EXPECT_EQ(copied, "See you at nine!");
  EXPECT_TRUE(runUntil([&] { return icon() == "tw-files-symbolic"; }, 10));

  press("intelligence.suggestAgain");
  EXPECT_EQ(model_.waiting(), 1U);
  EXPECT_FALSE(find("intelligence.suggestAgain")->is_sensitive());
  model_.answer();
  EXPECT_TRUE(find("intelligence.suggestAgain")->is_sensitive());
}

TEST_F(IntelligenceRowTest, AFailureIsToldInAnAlertWhichItsButtonCloses) {
  openWithMail();
  model_.fails = true;
  for (const char* chip : {"intelligence.summary", "intelligence.detectCategory",
                           "intelligence.analyzeSentiment", "intelligence.replies"}) {
    press(chip);
    model_.answer();
    ASSERT_TRUE(runUntil([] { return alert() != nullptr; })) << chip;
    EXPECT_STREQ(adw_message_dialog_get_heading(ADW_MESSAGE_DIALOG(alert())), "Error de Apple Intelligence");
    EXPECT_STREQ(adw_message_dialog_get_body(ADW_MESSAGE_DIALOG(alert())), "El modelo no devolvió contenido");
    EXPECT_FALSE(isRunning(chip));
    gtk_window_close(alert());
    ASSERT_TRUE(runUntil([] { return alert() == nullptr; }));
    EXPECT_EQ(window_->detail().detail().intelligenceError(), std::nullopt);
  }
}

TEST_F(IntelligenceRowTest, AnotherMessageTakesTheAnswersAwayAndClosesThePopover) {
  openWithMail();
  for (const char* chip :
       {"intelligence.summary", "intelligence.detectCategory", "intelligence.analyzeSentiment"}) {
    press(chip);
  }
  model_.answer();
  ASSERT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") != nullptr; }));
  select("b");
  EXPECT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") == nullptr; }));
  EXPECT_EQ(find("intelligence.category"), nullptr);
  EXPECT_EQ(find("intelligence.sentiment"), nullptr);
  EXPECT_NE(find("intelligence.detectCategory"), nullptr);
}

TEST_F(IntelligenceRowTest, AnAnswerThatArrivesAfterAnotherSelectionIsShownAsItComes) {
  openWithMail();
  press("intelligence.summary");
  select("b");
  model_.answer();
  ASSERT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") != nullptr; }));
  EXPECT_EQ(text("intelligence.summaryText"), "The boat leaves at ten. About Harbour");
}

TEST_F(IntelligenceRowTest, AWindowThatClosesWhileTheModelWorksIsSafe) {
  openWithMail();
  press("intelligence.summary");
  close();
  model_.answer();
  EXPECT_EQ(model_.waiting(), 0U);
}

TEST_F(IntelligenceRowTest, TheKeyboardAloneReachesAndPressesTheChips) {
  openWithMail();
  auto* window = GTK_WINDOW(window_->window().gobj());
  Keyboard::focus(window);
  ASSERT_TRUE(Keyboard::tabTo(window, "intelligence.summary"));
  Keyboard::press("Return");
  EXPECT_EQ(model_.waiting(), 1U);
  model_.answer();
  ASSERT_TRUE(runUntil([this, window] {
    auto* popover = find("intelligence.summaryPopover");
    GtkWidget* focus = focusedWidget(window);
    return popover != nullptr && focus != nullptr && gtk_widget_is_ancestor(focus, popover->gobj()) != FALSE;
  })) << describe(focusedWidget(window));
  Keyboard::press("Escape");
  EXPECT_TRUE(runUntil([this] { return find("intelligence.summaryPopover") == nullptr; }));
}

}  // namespace
}  // namespace tidewrack
