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

  /// Who hangs: the page that is shown, or the one before, behind which the shown one waits.
  enum class Culprit { shown, before };

  /// Calls `onHang` once for a question that stays unanswered for the patience, or, where a new page waits,
  /// for a moment. `view` outlives the watch.
  PageWatch(WebKitWebView* view, std::function<void(Culprit)> onHang);
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

 private:
  struct Question;
  void answered();
  void askLater();
  void expect(Milliseconds patience);

  static constexpr unsigned pauseMilliseconds = 1000;
  static constexpr Milliseconds patienceWithPageBefore{1000};
  static constexpr int questionsAfterLoading = 3;

  WebKitWebView* view_;
  std::function<void(Culprit)> onHang_;
  Milliseconds patience_{};
  int questionsLeft_ = 0;  ///< Negative while the page loads.
  std::shared_ptr<Question> open_;
  sigc::connection pause_;
  sigc::connection deadline_;
};

}  // namespace tidewrack::ui
