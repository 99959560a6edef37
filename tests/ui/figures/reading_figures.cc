// What reading costs: figures of the real window, each beside a reference of the same run where there is one.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

#include "measure.h"
#include "reading/inline_images.h"
#include "ui/page_support.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin) {
  return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Each page has a heading on a colour of its own, by which its picture is known.
guint32 headingColour(int number) {
  constexpr guint32 colours = 199;
  const auto place = static_cast<guint32>(number);
  return 0x302040 + ((place % colours) << 16U) + ((place / colours) << 8U);
}

std::string cssColour(guint32 colour) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "#%06x", colour);
  return text.data();
}

// A newsletter of about this size: nested tables, styles and text.
std::string newsletter(int number, std::size_t bytes) {
  std::string html =
      "<html><head><style>td{font-family:sans-serif;padding:4px}</style></head><body>"
      "<h1 style='background: " +
      cssColour(headingColour(number)) + "'>Number " + std::to_string(number) + "</h1>";
  for (int row = 0; html.size() < bytes; ++row) {
    html += "<table width='600'><tr><td style='color:#333333'><table><tr><td>Row " + std::to_string(row) +
            "</td><td>The harbour master writes it all down, line after "
            "line.</td></tr></table></td></tr></table>";
  }
  return html + "</body></html>";
}

std::string htmlArchive(int count, std::size_t bytes) {
  std::string archive;
  for (int number = 0; number < count; ++number) {
    archive += archivedMessage("Message-ID: <n" + std::to_string(number) +
                                   "@example.org>\nFrom: Ana <ana@example.org>\n"
                                   "Subject: Number " +
                                   std::to_string(number) + "\nContent-Type: text/html; charset=utf-8\n",
                               newsletter(number, bytes));
  }
  return archive;
}

// The colour of one point of what the widget last drew.
guint32 drawnColour(GtkWidget* widget, int x, int y) {
  GdkPaintable* picture = gtk_widget_paintable_new(widget);
  GtkSnapshot* snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(picture, snapshot, gtk_widget_get_width(widget), gtk_widget_get_height(widget));
  GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
  g_object_unref(picture);
  if (node == nullptr) {
    return 0;
  }
  const auto surface = Cairo::ImageSurface::create(Cairo::Surface::Format::RGB24, 1, 1);
  const auto context = Cairo::Context::create(surface);
  context->translate(-x, -y);
  gsk_render_node_draw(node, context->cobj());
  gsk_render_node_unref(node);
  surface->flush();
  guint32 colour = 0;
  std::memcpy(&colour, surface->get_data(), sizeof colour);
  return colour & 0xffffffU;
}

// Until the window has drawn a frame with this page. What the page itself calls its next frame is the
// engine's, before the window shows any of it, and its scripts learn of it a frame late.
void waitForPaint(WebKitWebView* view, int number) {
  struct Watch {
    GtkWidget* page;
    guint32 colour;
    bool isPainted;
  } watch{GTK_WIDGET(view), headingColour(number), false};
  GdkFrameClock* frames = gtk_widget_get_frame_clock(watch.page);
  const gulong handler = g_signal_connect(
      frames, "after-paint", G_CALLBACK(+[](GdkFrameClock*, gpointer data) {
        constexpr int besideTheText = 30;
        constexpr int withinTheHeading = 40;
        auto* self = static_cast<Watch*>(data);
        self->isPainted =
            self->isPainted || drawnColour(self->page, gtk_widget_get_width(self->page) - besideTheText,
                                           withinTheHeading) == self->colour;
      }),
      &watch);
  EXPECT_TRUE(runUntil([&] { return watch.isPainted; })) << "page " << number;
  g_signal_handler_disconnect(frames, handler);
}

std::size_t proportionalBytes(const std::filesystem::path& process) {
  std::ifstream rollup(process / "smaps_rollup");
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with("Pss_Anon:")) {
      return std::strtoull(line.c_str() + line.find(':') + 1, nullptr, 10) * 1024;
    }
  }
  return 0;
}

// Anonymous memory of this process and of its children of the engine, by the name of the program.
std::map<std::string, double> memoryByProgram() {
  std::map<std::string, double> memory;
  memory["window"] = static_cast<double>(proportionalBytes("/proc/self"));
  {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      std::error_code error;
      const auto program = std::filesystem::read_symlink(entry.path() / "exe", error).filename().string();
      std::ifstream environment(entry.path() / "environ");
      const std::string variables((std::istreambuf_iterator<char>(environment)), {});
      // Of this run, not of another one on the same machine.
      if (program.starts_with("WebKit") &&
          variables.find(std::string("XDG_DATA_HOME=") + g_get_user_data_dir()) != std::string::npos) {
        memory[program] += static_cast<double>(proportionalBytes(entry.path()));
      }
    }
  }
  return memory;
}

// How much one program, or, without a name, all of them have grown.
double grownBytes(const std::map<std::string, double>& before, const std::map<std::string, double>& after,
                  const std::string& program = {}) {
  double sum = 0;
  for (const auto& [name, bytes] : after) {
    const auto earlier = before.find(name);
    sum +=
        program.empty() || program == name ? bytes - (earlier == before.end() ? 0.0 : earlier->second) : 0.0;
  }
  return std::max(0.0, sum);
}

class ReadingFigures : public WindowTest {
 protected:
  void openWith(int count, std::size_t bytes) {
    open();
    import(archive("html.mbox", htmlArchive(count, bytes)));
    screen_->dismissImportStatus();
    runPending();
    ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr; }));
  }
  WebKitWebView* page() { return window_->detail().htmlView()->webView(); }
  void select(int number) {
    screen_->selectedMessageID.set(Text("n" + std::to_string(number) + "@example.org"));
  }
  static void rest(int milliseconds) {
    const auto begin = Clock::now();
    runUntil([&] { return millisecondsSince(begin) >= milliseconds; });
  }
};

TEST_F(ReadingFigures, OpeningAPageOfAHundredKilobytes) {
  constexpr int turns = 21;
  constexpr std::size_t bytes = 100'000;
  openWith(turns + 2, bytes);
  // The same document for both.
  const auto document = [](int number) {
    return buildDocument(newsletter(number, bytes), HTMLAppearance::light, false);
  };
  Gtk::Window bare;
  bare.set_default_size(window_->detail().htmlView()->get_width(),
                        window_->detail().htmlView()->get_height());
  GtkWidget* reference = webkit_web_view_new();
  bare.set_child(*Glib::wrap(reference));
  bare.present();
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(reference), document(0).c_str(), nullptr);
  waitForPaint(WEBKIT_WEB_VIEW(reference), 0);
  select(0);
  waitForPaint(page(), 0);
  std::vector<double> measured;
  std::vector<double> bareTimes;
  for (int turn = 1; turn <= turns; ++turn) {
    auto begin = Clock::now();
    select(turn);
    waitForPaint(page(), turn);
    measured.push_back(millisecondsSince(begin));
    const std::string html = document(turn);
    begin = Clock::now();
    webkit_web_view_load_html(WEBKIT_WEB_VIEW(reference), html.c_str(), nullptr);
    waitForPaint(WEBKIT_WEB_VIEW(reference), turn);
    bareTimes.push_back(millisecondsSince(begin));
  }
  bare.unset_child();
  const bench::Pair pair{median(measured) / 1000, median(bareTimes) / 1000};
  bench::Table table;
  table.addMilliseconds("open 100 KB of HTML until it is painted (median)", pair.measured * 1000, 100);
  table.addRatio("the same, to a bare web view", pair, 1.5);
}

TEST_F(ReadingFigures, TheArrowKeyHeldThroughTwoHundredMessages) {
  constexpr int count = 200;
  constexpr unsigned repeatMilliseconds = 33;
  openWith(count, 20'000);
  const auto selection = window_->list().listView().get_model();
  guint position = 0;
  auto lastKey = Clock::now();
  double longestPause = 0;
  sigc::connection keys = Glib::signal_timeout().connect(
      [&] {
        longestPause = std::max(longestPause, millisecondsSince(lastKey));
        lastKey = Clock::now();
        selection->select_item(position++, true);
        return position < count;
      },
      repeatMilliseconds);
  runUntil([&] { return position == count; });
  const std::string last = window_->list().model()->messageAt(count - 1)->id.string();
  waitForPaint(page(), std::stoi(last.substr(1)));
  bench::Table table;
  table.addMilliseconds("the last of 200 messages shows after the last key", millisecondsSince(lastKey), 300);
  table.addNote("longest time between two keys", std::to_string(longestPause) + " ms");
}

TEST_F(ReadingFigures, MemoryAfterFiveHundredMessages) {
  constexpr int count = 500;
  openWith(count, 100'000);
  // What is made once: a page, its process, the rows.
  for (int number = 0; number < 20; ++number) {
    select(number);
    waitForPaint(page(), number);
  }
  select(0);
  waitForPaint(page(), 0);
  rest(3000);
  const auto before = memoryByProgram();
  double slowest = 0;
  for (int number = 0; number < count; ++number) {
    const auto begin = Clock::now();
    select(number);
    waitForPaint(page(), number);
    slowest = std::max(slowest, millisecondsSince(begin));
  }
  select(0);
  waitForPaint(page(), 0);
  rest(5000);
  const auto after = memoryByProgram();
  bench::Table table;
  table.addBytes("memory that 500 messages leave behind", grownBytes(before, after), 30e6);
  table.addNote("longest time until one of them was painted",
                std::to_string(static_cast<int>(slowest)) + " ms");
  for (const auto& [program, bytes] : after) {
    table.addNote("of it in " + program,
                  std::to_string(static_cast<int>(grownBytes(before, after, program) / 1e6)) + " MB of " +
                      std::to_string(static_cast<int>(bytes / 1e6)) + " MB");
  }
}

// Images of this size in a body that is filled up to `bodyBytes`.
void measureInlineImages(const std::string& name, int images, std::size_t imageBytes, std::size_t bodyBytes) {
  EmailMessage message;
  std::string html;
  std::string bytes(imageBytes, '\0');
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    bytes[index] = static_cast<char>(index * 31 + index / 7);
  }
  for (int number = 0; number < images; ++number) {
    EmailAttachment attachment;
    attachment.isInline = true;
    attachment.mimeType = "image/png";
    attachment.contentID = Text("image" + std::to_string(number) + "@example.org");
    attachment.data = Content::ofBytes(bytes);
    html += "<p><img src=\"cid:" + attachment.contentID->string() + "\"></p>";
    while (html.size() < bodyBytes / static_cast<std::size_t>(images) * static_cast<std::size_t>(number)) {
      html += "<td style='color:#333'>The harbour master writes it all down, line after line.</td>";
    }
    message.attachments.push_back(attachment);
  }
  message.htmlBody = Content::ofBytes(html);
  // The reference copies as many bytes as the result holds.
  const std::size_t resultSize = resolveInlineHTML(message).html->size();
  const std::string source(resultSize, 'x');
  const auto pair = bench::medianOfTurns(
      9,
      [&] {
        return bench::secondsOf([&] { EXPECT_EQ(resolveInlineHTML(message).html->size(), resultSize); });
      },
      [&] { return bench::secondsOf([&] { EXPECT_EQ(std::string(source).size(), resultSize); }); });
  bench::Table table;
  const double rate = images * static_cast<double>(imageBytes) / pair.measured / 1e6;
  table.addNote("resolveInlineHTML, " + name, std::to_string(static_cast<int>(rate)) + " MB/s (goal: 400)");
  table.addNote("the same, to a copy of the result", std::to_string(pair.ratio()));
}

TEST(ResolvingFigures, InlineImages) {
  measureInlineImages("500 images of 60 KB", 500, 60'000, 0);
  measureInlineImages("10 images of 3 MB", 10, 3'000'000, 0);
  measureInlineImages("500 images of 60 KB in a body of 30 MB", 500, 60'000, 30'000'000);
}

}  // namespace
}  // namespace tidewrack
