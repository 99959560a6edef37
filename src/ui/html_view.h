#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <gtkmm.h>
#include <webkit/webkit.h>

#include "platform/guarded_proxy.h"
#include "reading/html_load_memory.h"
#include "ui/page_watch.h"

namespace tidewrack::ui {

/// Shows an HTML body. One for a window, reused for every message. What a mail does leaves no trace on disk
/// and reaches neither this computer's services nor those of its network: the session is ephemeral, a
/// content filter stands between the page and the network, nothing loads before that filter is attached, and
/// every connection goes through a proxy that looks at the addresses behind a name. Main thread only.
class HTMLView : public Gtk::Box {
 public:
  /// `proxy` is held as long as the view lives.
  explicit HTMLView(std::shared_ptr<const GuardedProxy> proxy = GuardedProxy::shared());
  ~HTMLView() override;
  HTMLView(const HTMLView&) = delete;
  HTMLView& operator=(const HTMLView&) = delete;

  /// Shows `html` (not null) in this appearance. Loads only when one of the three differs from the last
  /// call, so that a redraw of the surroundings keeps the page and its scroll position.
  void update(const SharedHTML& html, HTMLAppearance appearance, bool invertContent);
  /// Empties the view, so that nothing of the page runs on behind other messages.
  void clear();

  /// Steps of the zoom, between the two limits.
  void zoomIn();
  void zoomOut();
  void resetZoom();

  /// The page cannot be shown: its process died or hangs, or the filter could not be made. The next
  /// `update` tries anew.
  sigc::signal<void()>& signalUnavailable() { return unavailable_; }
  /// A link that the user pressed and that may be opened outside.
  sigc::signal<void(const std::string& url)>& signalOpenLink() { return openLink_; }
  /// The page is loaded.
  sigc::signal<void()>& signalLoaded() { return loaded_; }

  /// For how long a small page may be busy before it counts as hanging.
  void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }

  [[nodiscard]] WebKitWebView* webView() const { return view_; }

  static constexpr double minimumZoom = 0.5;
  static constexpr double maximumZoom = 2.0;
  static constexpr double zoomStep = 0.1;

 private:
  void makeView();
  [[nodiscard]] WebKitNetworkSession* makeSession() const;
  void refuseEverythingElse();
  void applyAppearance(HTMLAppearance appearance);
  void load(const std::string& document);
  void loadCurrent();
  void showPageBehindHang(PageWatch::Culprit culprit);
  void styleInverted(HTMLAppearance appearance, bool invertContent);
  void giveUp();
  void loadEnded();
  [[nodiscard]] bool isProcessWorn() const;
  void terminateQuietly();
  static bool decideResponse(WebKitPolicyDecision* decision);
  bool decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);
  void setZoom(double zoom);

  enum class FilterState { pending, attached, failed };

  static constexpr std::chrono::milliseconds usualPatience{10'000};
  static constexpr std::chrono::milliseconds patiencePerMegabyte{1000};

  // What a process shows before a fresh one takes its place, which makes one page come later: a number of
  // pages that together were large, or very many. When nothing is shown anyway, a few are enough.
  static constexpr int pagesOfWornProcess = 40;
  static constexpr std::size_t bytesOfWornProcess = std::size_t{4} << 20U;
  static constexpr int mostPages = 250;
  static constexpr int pagesBeforePause = 20;

  std::shared_ptr<const GuardedProxy> proxy_;
  WebKitWebView* view_ = nullptr;
  std::unique_ptr<PageWatch> watch_;
  std::chrono::milliseconds patience_ = usualPatience;
  int pagesOfProcess_ = 0;
  std::size_t bytesOfProcess_ = 0;
  bool isTerminating_ = false;  ///< The process ends because the view wants it.
  GCancellable* cancellable_ = nullptr;
  FilterState filter_ = FilterState::pending;
  std::shared_ptr<GBytes> document_;  ///< What is shown, or will be once the filter is attached; or null.
  HTMLLoadMemory memory_;
  sigc::signal<void()> unavailable_;
  sigc::signal<void(const std::string&)> openLink_;
  sigc::signal<void()> loaded_;
};

}  // namespace tidewrack::ui
