#include "export/ordered_writing.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "library/content_reading.h"

namespace tidewrack {
namespace {

// Messages of one stretch: enough to make the hand-over cheap, few enough to keep every processor busy.
constexpr std::size_t stretchSize = 64;
// Stretches that are ready or under way at a time.
constexpr std::size_t mostAhead = 8;
// A stretch ends before its time when its text or the next message is larger than this.
constexpr std::size_t largeText = std::size_t{2} << 20U;
constexpr unsigned mostThreads = 4;

class Pipeline {
 public:
  using MakeWriter = std::function<std::unique_ptr<FormatWriter>()>;

  Pipeline(const MessageList& messages, const MakeWriter& makeWriter)
      : messages_(messages), makeWriter_(makeWriter) {}

  ~Pipeline() {
    {
      const std::lock_guard guard(mutex_);
      isOver_ = true;
    }
    changed_.notify_all();
    for (auto& thread : threads_) {
      thread.join();
    }
  }
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  void run(unsigned threads, const ExportUtility::Sink& sink, const ExportUtility::Progress& progress) {
    for (unsigned index = 0; index < threads; ++index) {
      threads_.emplace_back([this] { work(); });
    }
    const auto writer = makeWriter_();
    TextOutput output(sink);
    const std::size_t count = (messages_.size() + stretchSize - 1) / stretchSize;
    for (std::size_t number = 0; number < count; ++number) {
      Stretch stretch = take(number);
      if (stretch.failure) {
        std::rethrow_exception(stretch.failure);
      }
      sink(stretch.text);
      const std::size_t end = endOf(number);
      for (std::size_t place = stretch.end; place < end; ++place) {
        writer->write(*messages_[place], place, output);
        output.go();
      }
      giveBack(std::move(stretch.text));
      if (progress) {
        progress(end);
      }
    }
  }

 private:
  struct Stretch {
    std::string text;
    std::size_t end = 0;  // The first message that is not in the text.
    std::exception_ptr failure;
    bool isReady = false;
  };

  [[nodiscard]] std::size_t endOf(std::size_t number) const {
    return std::min((number + 1) * stretchSize, messages_.size());
  }

  Stretch take(std::size_t number) {
    std::unique_lock guard(mutex_);
    Stretch& slot = slots_[number % mostAhead];
    changed_.wait(guard, [&] { return slot.isReady; });
    Stretch stretch = std::move(slot);
    slot = {};
    taken_ = number + 1;
    guard.unlock();
    changed_.notify_all();
    return stretch;
  }

  void work() {
    std::unique_ptr<FormatWriter> writer;
    while (true) {
      std::size_t number = 0;
      {
        std::unique_lock guard(mutex_);
        const auto isLast = [this] { return next_ * stretchSize >= messages_.size(); };
        changed_.wait(guard, [&] { return isOver_ || isLast() || next_ < taken_ + mostAhead; });
        if (isOver_ || isLast()) {
          return;
        }
        number = next_++;
      }
      Stretch stretch;
      try {
        if (!writer) {
          writer = makeWriter_();
        }
        fill(stretch, number, *writer);
      } catch (...) {
        stretch.failure = std::current_exception();
      }
      stretch.isReady = true;
      {
        const std::lock_guard guard(mutex_);
        slots_[number % mostAhead] = std::move(stretch);
      }
      changed_.notify_all();
    }
  }

  void fill(Stretch& stretch, std::size_t number, const FormatWriter& writer) {
    const ContentReading reading;
    TextOutput output;
    output.text = spareText();
    const std::size_t end = endOf(number);
    for (stretch.end = number * stretchSize; stretch.end < end; ++stretch.end) {
      const EmailMessage& message = *messages_[stretch.end];
      if (output.text.size() > largeText || writer.weight(message) > largeText) {
        break;
      }
      writer.write(message, stretch.end, output);
    }
    stretch.text = std::move(output.text);
  }

  // Texts go round: fresh memory of this size costs more than what is written into it.
  std::string spareText() {
    const std::lock_guard guard(mutex_);
    if (spare_.empty()) {
      return {};
    }
    std::string text = std::move(spare_.back());
    spare_.pop_back();
    return text;
  }
  void giveBack(std::string text) {
    text.clear();
    const std::lock_guard guard(mutex_);
    spare_.push_back(std::move(text));
  }

  const MessageList& messages_;
  const MakeWriter& makeWriter_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t next_ = 0;   // The stretch that the next free thread begins.
  std::size_t taken_ = 0;  // Stretches that have been passed on.
  bool isOver_ = false;
  std::array<Stretch, mostAhead> slots_;
  std::vector<std::string> spare_;
  std::vector<std::thread> threads_;
};

}  // namespace

void writeInOrder(const MessageList& messages,
                  const std::function<std::unique_ptr<FormatWriter>()>& makeWriter,
                  const ExportUtility::Sink& sink, const ExportUtility::Progress& progress) {
  const auto stretches = (messages.size() + stretchSize - 1) / stretchSize;
  const auto threads =
      std::min<std::size_t>(std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads), stretches);
  Pipeline(messages, makeWriter).run(static_cast<unsigned>(threads), sink, progress);
}

}  // namespace tidewrack
