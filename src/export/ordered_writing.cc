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

// A stretch of the list has so many messages, or fewer when they come to so much text: enough to make the
// hand-over cheap and to be written at once, few enough to keep every processor busy.
constexpr std::size_t mostMessages = 512;
constexpr std::uint64_t enoughText = std::uint64_t{384} << 10U;
// A message beyond this is a stretch of its own.
constexpr std::uint64_t largeMessage = std::uint64_t{2} << 20U;
// Stretches that are ready or under way at a time.
constexpr std::size_t mostAhead = 8;
constexpr unsigned mostThreads = 4;
// Messages from the one that is written to the one whose lists are asked for, and from there to the record.
constexpr std::size_t lookAhead = 4;

class Pipeline {
 public:
  using MakeWriter = std::function<std::unique_ptr<FormatWriter>()>;

  Pipeline(const MessageList& messages, const MakeWriter& makeWriter)
      : messages_(messages), makeWriter_(makeWriter), writer_(makeWriter()) {}

  ~Pipeline() {
    {
      const std::lock_guard guard(mutex_);
      isOver_ = true;
    }
    freed_.notify_all();
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
    TextOutput output(sink);
    std::size_t end = 0;
    for (std::size_t number = 0; end < messages_.size(); ++number) {
      Stretch stretch = take(number);
      if (stretch.failure) {
        std::rethrow_exception(stretch.failure);
      }
      if (stretch.isLarge) {
        writer_->write(*messages_[stretch.begin], stretch.begin, output);
        output.go();
      } else {
        sink(stretch.text);
      }
      end = stretch.end;
      giveBack(std::move(stretch.text));
      if (progress) {
        progress(end);
      }
    }
  }

 private:
  struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isLarge = false;  // One message, which the calling thread writes.
    std::string text = {};
    std::exception_ptr failure = {};
    bool isReady = false;
  };

  Stretch take(std::size_t number) {
    std::unique_lock guard(mutex_);
    Stretch& slot = slots_[number % mostAhead];
    ready_.wait(guard, [&] { return slot.isReady; });
    Stretch stretch = std::move(slot);
    slot = {};
    taken_ = number + 1;
    guard.unlock();
    freed_.notify_all();
    return stretch;
  }

  void work() {
    std::unique_ptr<FormatWriter> writer;
    TextOutput output;
    while (true) {
      Stretch stretch;
      std::size_t number = 0;
      {
        std::unique_lock guard(mutex_);
        const auto isPlanned = [this] { return planned_ == messages_.size(); };
        freed_.wait(guard, [&] { return isOver_ || isPlanned() || next_ < taken_ + mostAhead; });
        if (isOver_ || isPlanned()) {
          return;
        }
        number = next_++;
        try {
          plan(stretch);
        } catch (...) {
          stretch.failure = std::current_exception();
        }
        if (!spare_.empty()) {
          output.text = std::move(spare_.back());
          spare_.pop_back();
        }
      }
      try {
        if (!writer) {
          writer = makeWriter_();
        }
        fill(stretch, *writer, output);
      } catch (...) {
        stretch.failure = std::current_exception();
      }
      stretch.isReady = true;
      {
        const std::lock_guard guard(mutex_);
        slots_[number % mostAhead] = std::move(stretch);
      }
      ready_.notify_one();
    }
  }

  // With the mutex held.
  void plan(Stretch& stretch) {
    stretch.begin = planned_;
    std::uint64_t weight = 0;
    while (planned_ < messages_.size() && planned_ - stretch.begin < mostMessages && weight < enoughText) {
      const std::uint64_t next = writer_->weight(*messages_[planned_]);
      if (next > largeMessage) {
        stretch.isLarge = planned_ == stretch.begin;
        planned_ += stretch.isLarge ? 1 : 0;
        break;
      }
      weight += next;
      ++planned_;
    }
    stretch.end = planned_;
  }

  // The records of a list lie all over the memory, which is slow to come: they are asked for in time.
  static void fetchRecord(const EmailMessage* message) {
    for (std::size_t offset = 0; offset < sizeof(EmailMessage); offset += 64) {
      __builtin_prefetch(reinterpret_cast<const char*>(message) + offset);
    }
  }
  static void fetchLists(const EmailMessage& message) {
    __builtin_prefetch(message.to.data());
    __builtin_prefetch(message.cc.data());
    __builtin_prefetch(message.labels.data());
    __builtin_prefetch(message.attachments.data());
  }

  void fill(Stretch& stretch, const FormatWriter& writer, TextOutput& output) {
    if (stretch.isLarge || stretch.failure) {
      return;
    }
    const ContentReading reading;
    for (std::size_t place = stretch.begin; place < stretch.end; ++place) {
      if (place + 2 * lookAhead < stretch.end) {
        fetchRecord(messages_[place + 2 * lookAhead].get());
        fetchLists(*messages_[place + lookAhead]);
      }
      writer.write(*messages_[place], place, output);
    }
    stretch.text = std::move(output.text);
    output.text.clear();
  }

  // Texts go round: fresh memory of this size costs more than what is written into it.
  void giveBack(std::string text) {
    text.clear();
    const std::lock_guard guard(mutex_);
    spare_.push_back(std::move(text));
  }

  const MessageList& messages_;
  const MakeWriter& makeWriter_;
  const std::unique_ptr<FormatWriter> writer_;  // Of the calling thread, and for plans.
  std::mutex mutex_;
  std::condition_variable ready_;  // The calling thread waits for it,
  std::condition_variable freed_;  // the others for this one.
  std::size_t planned_ = 0;        // The first message that belongs to no stretch yet.
  std::size_t next_ = 0;           // The number of the next stretch.
  std::size_t taken_ = 0;          // Stretches that have been passed on.
  bool isOver_ = false;
  std::array<Stretch, mostAhead> slots_;
  std::vector<std::string> spare_;
  std::vector<std::thread> threads_;
};

}  // namespace

void writeInOrder(const MessageList& messages,
                  const std::function<std::unique_ptr<FormatWriter>()>& makeWriter,
                  const ExportUtility::Sink& sink, const ExportUtility::Progress& progress) {
  // What fits into one stretch needs no second thread.
  const auto most = std::min<std::size_t>(mostThreads, (messages.size() + mostMessages - 1) / mostMessages);
  const auto threads = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, most);
  Pipeline(messages, makeWriter).run(static_cast<unsigned>(threads), sink, progress);
}

}  // namespace tidewrack
