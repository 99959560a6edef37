// Draws HTML files and messages as the window shows them, side by side in its modes, on contact sheets:
//   tidewrack-page-sheets SHEET-FOLDER FILE...
// and prints which of their texts hardly stand out from what is behind them.
// A file that ends in ".eml" is a message. Remote pictures are missing: nothing is asked for.

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtkmm.h>

#include "mail/charsets.h"
#include "mail/mbox_importer.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "support/temporary_folder.h"
#include "ui/page_support.h"

namespace tidewrack {
namespace {

constexpr int pageWidth = 720;
constexpr int pageHeight = 900;
constexpr double scale = 0.75;  // Text of 12 pixels can be read.
constexpr int captionHeight = 22;
constexpr int gap = 8;
constexpr int rowsOfSheet = 2;

/// How the window shows a body: the appearance of the desktop, or a forced background.
struct Mode {
  const char* name;
  bool isForced;
  HTMLAppearance appearance;
};
constexpr std::array modes = {
    Mode{"auto, light", false, HTMLAppearance::light}, Mode{"auto, dark", false, HTMLAppearance::dark},
    Mode{"forced light", true, HTMLAppearance::light}, Mode{"forced dark", true, HTMLAppearance::dark}};

ResolvedHTML resolved(const std::filesystem::path& file) {
  const std::string bytes = readFile(file);
  if (file.extension() == ".eml") {
    const auto messages =
        MBOXImporter::parseBytes("From - Thu Jan  1 00:00:00 2026\n" + bytes, Text(), Text());
    // A file that has a "From " line of its own gives an empty message before it.
    const auto found = std::find_if(messages.begin(), messages.end(),
                                    [](const auto& message) { return message->htmlBody.has_value(); });
    return found == messages.end() ? ResolvedHTML() : resolveInlineHTML(**found);
  }
  std::string html = decodeWithFallback(bytes);
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    html = decodeCharset(bytes, "UTF-16").value_or(html);
  }
  const auto hint = appearanceHint(html);
  return {std::move(html), hint};
}

Cairo::RefPtr<Cairo::ImageSurface> snapshotOf(WebKitWebView* view) {
  struct Answer {
    bool isDone = false;
    GdkTexture* texture = nullptr;
  } answer;
  webkit_web_view_get_snapshot(
      view, WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        auto* target = static_cast<Answer*>(data);
        target->texture = webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(source), result, nullptr);
        target->isDone = true;
      },
      &answer);
  runUntil([&] { return answer.isDone; });
  if (answer.texture == nullptr) {
    return {};
  }
  auto surface =
      Cairo::ImageSurface::create(Cairo::Surface::Format::ARGB32, gdk_texture_get_width(answer.texture),
                                  gdk_texture_get_height(answer.texture));
  gdk_texture_download(answer.texture, surface->get_data(), static_cast<gsize>(surface->get_stride()));
  surface->mark_dirty();
  g_object_unref(answer.texture);
  return surface;
}

// Texts whose contrast to the colour behind them is below 2, a line each: contrast, times, colours, text.
// Pictures behind a text are not known here. What the forced background turns over counts as turned over.
constexpr const char* faintTexts = R"js(
const parts = text => {
  const n = text.match(/[\d.]+/g).map(Number);
  return text.startsWith('color(') ? [n[0] * 255, n[1] * 255, n[2] * 255, n[3] ?? 1] : [n[0], n[1], n[2], n[3] ?? 1];
};
const linear = value => (value /= 255) <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
const luminance = c => 0.2126 * linear(c[0]) + 0.7152 * linear(c[1]) + 0.0722 * linear(c[2]);
const turned = (c, times) => times % 2 ? c.slice(0, 3).map(value => 255 - value) : c;
const over = (c, below) => c.slice(0, 3).map((value, i) => value * c[3] + below[i] * (1 - c[3]));
const turns = element => {
  let count = 0;
  for (let e = element; e; e = e.parentElement) count += getComputedStyle(e).filter.startsWith('invert') ? 1 : 0;
  return count;
};
const behind = element => {
  const layers = [];
  for (let e = element; e; e = e.parentElement) {
    const style = getComputedStyle(e);
    if (style.backgroundImage !== 'none') return null;
    const c = parts(style.backgroundColor);
    if (c[3] > 0) layers.push([...turned(c, turns(e)), c[3]]);
    if (c[3] === 1) break;
  }
  return layers.reverse().reduce((below, c) => over(c, below), [255, 255, 255]);
};
const found = new Map();
const walker = document.createTreeWalker(document.body ?? document.documentElement, NodeFilter.SHOW_TEXT);
while (walker.nextNode()) {
  const text = walker.currentNode.data.trim();
  const element = walker.currentNode.parentElement;
  const style = getComputedStyle(element);
  const box = element.getBoundingClientRect();
  // Controls are drawn by the theme.
  if (!text || element.closest('button, select, textarea') || style.visibility !== 'visible' || parseFloat(style.fontSize) < 5 || box.width < 4 || box.height < 4) continue;
  const ground = behind(element);
  if (!ground) continue;
  const own = parts(style.color);
  const shown = over([...turned(own, turns(element)), own[3]], ground);
  const [a, b] = [luminance(shown), luminance(ground)].sort((x, y) => y - x);
  const contrast = (a + 0.05) / (b + 0.05);
  if (contrast >= 2) continue;
  const key = contrast.toFixed(2) + ' ' + shown.map(Math.round) + ' on ' + ground.map(Math.round);
  const entry = found.get(key) ?? [0, text.slice(0, 40)];
  ++entry[0];
  found.set(key, entry);
}
return [...found].map(([key, [count, text]]) => `    ${key} x${count} "${text}"`).join('\n');
)js";

/// One window with one page, as in the program.
class Camera {
 public:
  Camera() : nowhere_([](const std::string&) { return std::string(); }) {
    window_.set_default_size(pageWidth, pageHeight);
    window_.set_child(view_);
    window_.present();
    useAsProxy(view_.webView(), nowhere_);
  }
  ~Camera() { window_.unset_child(); }
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  Cairo::RefPtr<Cairo::ImageSurface> picture(const ResolvedHTML& html, const Mode& mode) {
    const auto own = html.hint.value_or(HTMLAppearance::light);
    const auto shown = mode.isForced ? mode.appearance : html.hint.value_or(mode.appearance);
    bool isLoaded = false;
    sigc::connection connection = view_.signalLoaded().connect([&] { isLoaded = true; });
    view_.update(std::make_shared<const std::string>(*html.html), shown, mode.isForced && own != shown);
    runUntil([&] { return isLoaded; }, 15);
    connection.disconnect();
    // A page that is being replaced, or a busy machine, gives no picture.
    constexpr int mostAttempts = 5;
    Cairo::RefPtr<Cairo::ImageSurface> taken;
    for (int attempt = 0; !taken && attempt < mostAttempts; ++attempt) {
      evaluateAsynchronously(
          view_.webView(),
          "await new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)));");
      taken = snapshotOf(view_.webView());
    }
    return taken;
  }
  /// Of the page that the last picture shows.
  std::string textsThatReadBadly() { return evaluateAsynchronously(view_.webView(), faintTexts); }

 private:
  CountingServer nowhere_;
  Gtk::Window window_;
  ui::HTMLView view_;
};

void drawCaption(const Cairo::RefPtr<Cairo::Context>& context, const std::string& text, double x, double y) {
  context->set_source_rgb(0, 0, 0);
  context->set_font_size(13);
  context->move_to(x, y + captionHeight - 7);
  context->show_text(text);
}

void drawSheet(Camera& camera, const std::vector<std::filesystem::path>& files, const std::string& target) {
  const int cellWidth = static_cast<int>(pageWidth * scale) + gap;
  const int cellHeight = static_cast<int>(pageHeight * scale) + captionHeight;
  auto sheet = Cairo::ImageSurface::create(Cairo::Surface::Format::ARGB32,
                                           cellWidth * static_cast<int>(modes.size()) + gap,
                                           cellHeight * static_cast<int>(files.size()) + gap);
  auto context = Cairo::Context::create(sheet);
  context->set_source_rgb(0.6, 0.65, 0.75);
  context->paint();
  for (std::size_t row = 0; row < files.size(); ++row) {
    const auto html = resolved(files[row]);
    const double y = static_cast<double>(row) * cellHeight;
    for (std::size_t column = 0; column < modes.size(); ++column) {
      const double x = gap + static_cast<double>(column) * cellWidth;
      drawCaption(context, (column == 0 ? files[row].filename().string() + ": " : "") + modes[column].name, x,
                  y);
      const auto picture = html.html ? camera.picture(html, modes[column]) : nullptr;
      if (!picture) {
        drawCaption(context, html.html ? "no picture" : "no HTML body", x, y + captionHeight);
        continue;
      }
      if (const auto texts = camera.textsThatReadBadly(); !texts.empty()) {
        std::printf("%s, %s:\n%s\n", files[row].filename().c_str(), modes[column].name, texts.c_str());
      }
      context->save();
      context->translate(x, y + captionHeight);
      context->scale(scale, scale);
      context->set_source(picture, 0, 0);
      context->paint();
      context->restore();
    }
  }
  sheet->write_to_png(target);
}

int drawSheets(const std::filesystem::path& folder, std::vector<std::filesystem::path> files) {
  std::sort(files.begin(), files.end());
  std::filesystem::create_directories(folder);
  testApplication();
  Camera camera;
  int number = 0;
  for (std::size_t first = 0; first < files.size(); first += rowsOfSheet) {
    const auto end = std::min(first + rowsOfSheet, files.size());
    const std::vector<std::filesystem::path> rows(files.begin() + static_cast<long>(first),
                                                  files.begin() + static_cast<long>(end));
    char name[32];
    std::snprintf(name, sizeof name, "pages-%02d.png", ++number);
    drawSheet(camera, rows, folder / name);
    std::printf("%s\n", (folder / name).c_str());
    std::fflush(stdout);
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace tidewrack

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("Usage: tidewrack-page-sheets SHEET-FOLDER FILE...\n", stderr);
    return 2;
  }
  const tidewrack::TemporaryFolder world;
  ::setenv("XDG_CACHE_HOME", world.path().c_str(), 1);
  std::setlocale(LC_ALL, "C.UTF-8");
  return tidewrack::drawSheets(argv[1], {argv + 2, argv + argc});
}
