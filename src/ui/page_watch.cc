#include "ui/page_watch.h"

#include <utility>

namespace tidewrack::ui {

/// A question that the page has not answered yet. It outlives a watch that no longer wants the answer.
struct PageWatch::Question {
  PageWatch* watch;
  Culprit asked = Culprit::shown;
};

PageWatch::PageWatch(WebKitWebView* view, std::function<void(Culprit)> onHang)
    : view_(view), onHang_(std::move(onHang)) {}

PageWatch::~PageWatch() {
  stop();
}

void PageWatch::start(Milliseconds patience) {
  patience_ = patience;
  questionsLeft_ = -1;
  if (open_) {  // The page before still owes its answer.
    if (open_->asked == Culprit::shown) {
      open_->asked = Culprit::before;
      expect(patienceWithPageBefore);
    }
  } else {
    ask();
  }
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
  expect(patience_);
}

void PageWatch::expect(Milliseconds patience) {
  deadline_.disconnect();
  deadline_ = Glib::signal_timeout().connect(
      [this] {
        const auto culprit = open_->asked;
        const auto onHang = onHang_;
        stop();
        onHang(culprit);
        return false;
      },
      static_cast<unsigned>(patience.count()));
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

}  // namespace tidewrack::ui
