#include "ui/html_view.h"

#include <chrono>
#include <string>
#include <vector>

#include <webkit/webkit.h>

#include "ui/content_filter.h"
#include "ui/page_support.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

std::string htmlMessage(const std::string& id, const std::string& html) {
  return archivedMessage(
      "Message-ID: <" + id + ">\nSubject: " + id + "\nContent-Type: text/html; charset=utf-8\n", html);
}

class HTMLViewTest : public WindowTest {
 protected:
  // Opens the window over one message with this body, and waits for its page.
  void show(const std::string& html) {
    open();
    import(archive("html.mbox", htmlMessage("page@example.org", html)));
    ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr; }));
    ASSERT_TRUE(runUntil([this] { return isLoaded(); }));
  }
  WebKitWebView* view() { return window_->detail().htmlView()->webView(); }
  // Whether the line stands over the body that says why it is text.
  bool showsNotice() {
    auto* notice = find<Gtk::Revealer>("messageDetail.notice");
    return notice != nullptr && notice->get_reveal_child();
  }
  bool isLoaded() {
    return find("messageDetail.html") != nullptr && webkit_web_view_is_loading(view()) == FALSE &&
           webkit_web_view_get_estimated_load_progress(view()) == 1.0;
  }
};

TEST_F(HTMLViewTest, ThePageShowsTheBody) {
  show("<html><head></head><body><p id=a>Grüße aus dem Hafen</p></body></html>");
  EXPECT_EQ(evaluate(view(), "document.getElementById('a').textContent"), "Grüße aus dem Hafen");
  EXPECT_EQ(evaluate(view(), "document.URL"), "about:blank");
}

TEST_F(HTMLViewTest, LightTextReallyStandsOnADarkPage) {
  show("<p>plain fragment</p>");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).backgroundColor"), "rgb(255, 255, 255)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).color"), "rgb(29, 29, 31)");
  window_->detail().detail().setHTMLBackground(HTMLBackgroundPreference::dark);
  // A message of unknown appearance counts as light and is turned over by the filter.
  ASSERT_TRUE(runUntil([&] {
    return evaluate(view(), "getComputedStyle(document.documentElement).backgroundColor") ==
           "rgb(28, 28, 30)";
  }));
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).filter"), "invert(1) hue-rotate(180deg)");
}

TEST_F(HTMLViewTest, TextWithoutAColourIsReadableOnAForcedBackground) {
  show(
      "<html><head></head><body><p id=a>plain</p><p id=b style='color: rgb(200, 0, "
      "0)'>red</p><a id=c href='https://example.org/'>link<img id=d alt=words style='color: "
      "black'></a><img id=e alt=words style='background: #dddddd; color: #555555'></body></html>");
  window_->detail().detail().setHTMLBackground(HTMLBackgroundPreference::dark);
  // The filter turns black on white into white on black.
  ASSERT_TRUE(runUntil([&] {
    return evaluate(view(), "getComputedStyle(document.body).filter") == "invert(1) hue-rotate(180deg)";
  }));
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).backgroundColor"), "rgb(255, 255, 255)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('a')).color"), "rgb(29, 29, 31)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('b')).color"), "rgb(200, 0, 0)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('c')).color"), "rgb(0, 0, 238)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('d')).color"), "rgb(230, 230, 230)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('e')).color"), "rgb(85, 85, 85)");
  window_->detail().detail().setHTMLBackground(HTMLBackgroundPreference::light);
  ASSERT_TRUE(runUntil([&] { return evaluate(view(), "getComputedStyle(document.body).filter") == "none"; }));
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('a')).color"), "rgb(29, 29, 31)");
}

TEST_F(HTMLViewTest, ADarkMessageStandsOnADarkPageWhateverTheDesktop) {
  show("<body bgcolor='#000000'><p id=a>night</p></body>");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.documentElement).colorScheme"), "dark");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('a')).color"), "rgb(230, 230, 230)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).filter"), "none");
}

TEST_F(HTMLViewTest, InTheDarkAMessageOfNoAppearanceIsLightOnDark) {
  open();
  import(archive("html.mbox", htmlMessage("page@example.org", "<p id=a>plain</p>")));
  ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr && isLoaded(); }));
  window_->detail().detail().setSystemIsDark(true);
  ASSERT_TRUE(runUntil([&] {
    return evaluate(view(), "getComputedStyle(document.body).backgroundColor") == "rgb(28, 28, 30)";
  }));
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.getElementById('a')).color"), "rgb(230, 230, 230)");
  EXPECT_EQ(evaluate(view(), "getComputedStyle(document.body).filter"), "none");
}

TEST_F(HTMLViewTest, APictureInThePageIsShown) {
  const std::string png =
      "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==";
  show("<img id=a src=\"data:image/png;base64," + png + "\">");
  EXPECT_EQ(evaluate(view(), "document.getElementById('a').naturalWidth"), "1");
}

TEST_F(HTMLViewTest, TheSamePageIsNotLoadedAgain) {
  show("<p>once</p>");
  evaluate(view(), "window.mark = 7; 0");
  window_->detail().detail().setSystemIsDark(false);
  screen_->selectedMessageID.notify();
  runPending();
  EXPECT_EQ(evaluate(view(), "window.mark"), "7");
}

TEST_F(HTMLViewTest, AMetaRefreshLeadsNowhere) {
  const CountingServer server;
  show("<html><head><meta http-equiv=refresh content='0; url=" + server.address() +
       "/refresh'></head><body><p id=a>stays</p></body></html>");
  letPageSettle(view());
  EXPECT_EQ(evaluate(view(), "document.getElementById('a').textContent"), "stays");
  EXPECT_EQ(server.visits(), 0);
}

TEST_F(HTMLViewTest, AScriptOpensNoLinkByItself) {
  show("<a id=a href='https://example.org/'>link</a><script>document.getElementById('a').click()</script>");
  std::vector<std::string> opened;
  window_->detail().htmlView()->signalOpenLink().connect(
      [&](const std::string& url) { opened.push_back(url); });
  letPageSettle(view());
  EXPECT_EQ(evaluate(view(), "document.getElementById('a').textContent"), "link");
  EXPECT_TRUE(opened.empty());
}

TEST_F(HTMLViewTest, APressedLinkOpensOutsideAndThePageStays) {
  show(
      "<a id=a href='https://example.org/x'>web</a><a id=b href='file:///etc/passwd'>file</a>"
      "<a id=c href='https://example.org/y' target='_blank'>new window</a>");
  std::vector<std::string> opened;
  auto* page = window_->detail().htmlView();
  page->signalOpenLink().clear();
  page->signalOpenLink().connect([&](const std::string& url) { opened.push_back(url); });
  // A script of the host counts as the user.
  for (const char* id : {"a", "b", "c"}) {
    evaluate(view(), std::string("document.getElementById('") + id + "').click(); 0");
  }
  EXPECT_TRUE(runUntil([&] { return opened.size() == 2; }, 10));
  EXPECT_EQ(opened, (std::vector<std::string>{"https://example.org/x", "https://example.org/y"}));
  EXPECT_EQ(evaluate(view(), "document.getElementById('a').textContent"), "web");
}

TEST_F(HTMLViewTest, APageWhoseProcessDiesGivesWayToTheText) {
  show("<p>The text of the page</p>");
  webkit_web_view_terminate_web_process(view());
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.text") != nullptr; }));
  EXPECT_TRUE(showsNotice());
  EXPECT_EQ(window_->detail().detail().displayMode(), BodyDisplayMode::text);
  // The page can be asked for again.
  window_->detail().detail().setDisplayMode(BodyDisplayMode::html);
  EXPECT_TRUE(runUntil([&] { return isLoaded(); }));
  EXPECT_EQ(evaluate(view(), "document.body.textContent.trim()"), "The text of the page");
}

TEST_F(HTMLViewTest, APageThatLoopsForEverGivesWayToTheText) {
  open();
  import(archive("loop.mbox", htmlMessage("loop@example.org",
                                          "<p>The text of the loop</p><script>while (true) {}</script>") +
                                  htmlMessage("good@example.org", "<p id=a>The good page</p>")));
  screen_->selectedMessageID.set(Text("good@example.org"));
  ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr && isLoaded(); }));
  window_->detail().htmlView()->setPatience(std::chrono::milliseconds(1500));
  screen_->selectedMessageID.set(Text("loop@example.org"));
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.text") != nullptr; }));
  EXPECT_TRUE(showsNotice());
  EXPECT_EQ(find<Gtk::TextView>("messageDetail.text")->get_buffer()->get_text(), "The text of the loop");
  // The next message is a page again, without the line.
  window_->detail().htmlView()->setPatience(std::chrono::seconds(30));
  screen_->selectedMessageID.set(Text("good@example.org"));
  ASSERT_TRUE(runUntil([&] { return find("messageDetail.html") != nullptr; }));
  EXPECT_TRUE(
      runUntil([&] { return evaluate(view(), "document.body?.textContent.trim()") == "The good page"; }));
  EXPECT_FALSE(showsNotice());
}

TEST_F(HTMLViewTest, AMessageDoesNotWaitForThePageBeforeItThatLoops) {
  open();
  import(archive("loop.mbox", htmlMessage("loop@example.org", "<p id=l>loop</p>") +
                                  htmlMessage("good@example.org", "<p id=a>The good page</p>")));
  screen_->selectedMessageID.set(Text("loop@example.org"));
  ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr && isLoaded(); }));
  webkit_web_view_evaluate_javascript(view(), "while (true) {}", -1, nullptr, nullptr, nullptr, nullptr,
                                      nullptr);
  // For longer than the pause between two questions to the page, and the time one may stay open.
  const auto begin = std::chrono::steady_clock::now();
  runUntil([&] { return std::chrono::steady_clock::now() - begin > std::chrono::milliseconds(2500); });
  screen_->selectedMessageID.set(Text("good@example.org"));
  EXPECT_TRUE(
      runUntil([&] { return evaluate(view(), "document.body?.textContent.trim()") == "The good page"; }, 5));
  EXPECT_FALSE(showsNotice());
  EXPECT_EQ(window_->detail().detail().displayMode(), BodyDisplayMode::html);
}

TEST_F(HTMLViewTest, TheLastOfManySelectedMessagesIsShown) {
  open();
  std::string bytes;
  for (int number = 0; number < 30; ++number) {
    bytes += htmlMessage("m" + std::to_string(number), "<p id=a>page " + std::to_string(number) + "</p>");
  }
  import(archive("many.mbox", bytes));
  const auto selection = window_->list().listView().get_model();
  for (guint position = 0; position < 30; ++position) {
    selection->select_item(position, true);
    g_main_context_iteration(nullptr, FALSE);
  }
  const std::string last = window_->list().model()->messageAt(29)->id.string();
  EXPECT_EQ(screen_->selectedMessageID(), Text(last));
  ASSERT_TRUE(runUntil([&] { return window_->detail().htmlView() != nullptr; }));
  EXPECT_TRUE(runUntil([&] {
    return evaluate(view(), "document.getElementById('a') && document.getElementById('a').textContent") ==
           "page " + last.substr(1);
  }));
}

class LongReading : public PageTest {
 protected:
  void watchProcesses() {
    g_signal_connect(page(), "web-process-terminated",
                     G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
                       ++static_cast<LongReading*>(self)->ended_;
                     }),
                     this);
    view().signalUnavailable().connect([this] { ++failures_; });
  }
  void showPages(int count, std::size_t bytes) {
    for (int number = 0; number < count; ++number) {
      show("<p id=n>" + std::to_string(++shown_) + "</p><!--" + std::string(bytes, 'x') + "-->");
      ASSERT_EQ(evaluated("document.getElementById('n').textContent"), std::to_string(shown_));
    }
  }

  int shown_ = 0;
  int ended_ = 0;
  int failures_ = 0;
};

TEST_F(LongReading, AFreshProcessTakesOverAfterManyLargePages) {
  watchProcesses();
  showPages(40, 110'000);
  EXPECT_EQ(ended_, 0);
  showPages(2, 110'000);
  EXPECT_EQ(ended_, 1);
  EXPECT_EQ(failures_, 0);
}

TEST_F(LongReading, SmallPagesKeepTheirProcess) {
  watchProcesses();
  showPages(60, 1000);
  EXPECT_EQ(ended_, 0);
}

TEST_F(LongReading, APauseIsTheTimeForAFreshProcess) {
  watchProcesses();
  showPages(5, 1000);
  view().clear();
  EXPECT_EQ(ended_, 0);
  showPages(20, 1000);
  view().clear();
  EXPECT_EQ(ended_, 1);
  showPages(1, 1000);
  EXPECT_EQ(failures_, 0);
}

TEST(ContentFilterRules, AreOneListOfRules) {
  const std::string rules = ui::contentFilterRules();
  EXPECT_TRUE(rules.starts_with(R"([{"trigger":{"url-filter":".*"},"action":{"type":"block"}})"));
  EXPECT_TRUE(rules.ends_with("]"));
}

}  // namespace
}  // namespace tidewrack
