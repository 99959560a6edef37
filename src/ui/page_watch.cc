#include "ui/page_watch.h"

#include <utility>

namespace tidewrack::ui {

/// A question that the page has not answered yet. It outlives a watch that no longer wants the answer.
struct PageWatch::Question {
  PageWatch* watch;
  std::chrono::steady_clock::time_point asked = std::chrono::steady_clock::now();
};

PageWatch::PageWatch(WebKitWebView* view, std::function<void()> onHang)
    : view_(view), onHang_(std::move(onHang)) {}

PageWatch::~PageWatch() {
  stop();
}

void PageWatch::start(Milliseconds patience) {
  stop();
  patience_ = patience;
  questionsLeft_ = -1;
  ask();
}

void PageWatch::loadEnded() {
  if (questionsLeft_ < 0) {
    questionsLeft_ = questionsAfterLoading;
  }
}

void PageWatch::stop() {
  pause_.disconnect();
  deadline_.disconnect();
  if (open_) {
    open_->watch = nullptr;
    open_.reset();
  }
  questionsLeft_ = 0;
}

void PageWatch::ask() {
  if (open_) {
    return;
  }
  pause_.disconnect();
  open_ = std::make_shared<Question>(Question{this});
  // In a world of its own, where no script of the page can change what is asked.
  webkit_web_view_evaluate_javascript(
      view_, "0", -1, "tidewrack-watch", nullptr, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<std::shared_ptr<Question>> question(
            static_cast<std::shared_ptr<Question>*>(data));
        // A failure is an answer too: the page has been replaced.
        JSCValue* value =
            webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, nullptr);
        if (value != nullptr) {
          g_object_unref(value);
        }
        if ((*question)->watch != nullptr) {
          (*question)->watch->answered();
        }
      },
      new std::shared_ptr<Question>(open_));
  deadline_ = Glib::signal_timeout().connect(
      [this] {
        const auto onHang = onHang_;
        stop();
        onHang();
        return false;
      },
      static_cast<unsigned>(patience_.count()));
}

void PageWatch::answered() {
  open_.reset();
  deadline_.disconnect();
  if (questionsLeft_ != 0) {
    questionsLeft_ -= questionsLeft_ > 0 ? 1 : 0;
    askLater();
  }
}

void PageWatch::askLater() {
  pause_ = Glib::signal_timeout().connect(
      [this] {
        ask();
        return false;
      },
      pauseMilliseconds);
}

bool PageWatch::isHeldUp() const {
  return open_ && std::chrono::steady_clock::now() - open_->asked >= heldUpAfter;
}

}  // namespace tidewrack::ui
