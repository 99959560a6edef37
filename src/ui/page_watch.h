#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include <gtkmm.h>
#include <webkit/webkit.h>

namespace tidewrack::ui {

/// Finds a page that hangs: a script that loops for ever, or a process that no longer answers. It asks the
/// page a trivial question every second while the page loads and for a short while behind, and whenever the
/// engine suspects a hang. Main thread only.
class PageWatch {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// Calls `onHang` once for a question that stays unanswered for the patience. `view` outlives the watch.
  PageWatch(WebKitWebView* view, std::function<void()> onHang);
  ~PageWatch();
  PageWatch(const PageWatch&) = delete;
  PageWatch& operator=(const PageWatch&) = delete;

  /// Watches the page that is being loaded now. A large page may be busy for longer.
  void start(Milliseconds patience);
  /// The page has been loaded: soon the questions end.
  void loadEnded();
  /// Asks now, unless a question is open.
  void ask();
  /// Forgets the page, for one that is gone.
  void stop();

  /// Whether a question has been open for long enough that a new page should not wait behind this one.
  [[nodiscard]] bool isHeldUp() const;

 private:
  struct Question;
  void answered();
  void askLater();

  static constexpr unsigned pauseMilliseconds = 1000;
  static constexpr Milliseconds heldUpAfter{1000};
  static constexpr int questionsAfterLoading = 3;

  WebKitWebView* view_;
  std::function<void()> onHang_;
  Milliseconds patience_{};
  int questionsLeft_ = 0;  ///< Negative while the page loads.
  std::shared_ptr<Question> open_;
  sigc::connection pause_;
  sigc::connection deadline_;
};

}  // namespace tidewrack::ui
