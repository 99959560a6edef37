#include "mail/chunked_reader.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "mail/message_boundaries.h"
#include "mail/message_reader.h"

namespace tidewrack {
namespace {

constexpr std::size_t defaultChunkSize = std::size_t{1} << 20U;  // bytes
constexpr std::size_t mostHelpers = 3;

// The messages that begin in a chunk. Its last one may reach far beyond it.
void readChunk(std::string_view bytes, const ArrivingBytes& arriving, std::size_t begin, std::size_t end,
               MessageReader& reader, MessageList& messages) {
  // Reads what follows a separator, up to the next one.
  const auto readMessage = [&](std::size_t message) {
    const std::size_t next = findSeparator(bytes, message, arriving);
    if (auto made = reader.read(message, next - message)) {
      messages.push_back(std::move(made));
    }
    return next;
  };
  std::size_t separator = 0;
  if (begin == 0) {
    separator = readMessage(0);  // The beginning of the archive begins a message without a separator.
  } else {
    // In this chunk only, so that the chunks of a message that fills many are not all read to its end.
    const std::string_view upToEnd = bytes.substr(0, end + separatorSize);
    arriving.waitUntil(upToEnd.size());
    separator = findSeparator(upToEnd, begin);
  }
  while (separator < end) {
    separator = readMessage(behindLine(bytes, separator, arriving));
  }
}

// The state that the threads of one reading share.
class Chunks {
 public:
  Chunks(std::string_view bytes, const ArrivingBytes& arriving, std::size_t chunkSize, std::size_t window)
      : bytes_(bytes),
        arriving_(arriving),
        chunkSize_(chunkSize),
        count_((bytes.size() + chunkSize - 1) / chunkSize),
        slots_(window) {}

  // Reads chunks as they come into the window, until there is none left.
  void help(MessageReader& reader) {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return isStopped_ || next_ == count_ || canTake(); });
      if (isStopped_ || next_ == count_) {
        return;
      }
      readNext(lock, reader);
    }
  }

  // The messages of a chunk, of which the caller asks for one after the other; it helps rather than waits.
  MessageList take(std::size_t index, MessageReader& reader) {
    std::unique_lock lock(mutex_);
    Slot& slot = slotOf(index);
    while (!slot.isDone) {
      if (canTake()) {
        readNext(lock, reader);
      } else {
        changed_.wait(lock);
      }
    }
    if (slot.failure) {
      std::rethrow_exception(slot.failure);
    }
    MessageList messages = std::move(slot.messages);
    slot = Slot();
    ++taken_;
    changed_.notify_all();
    return messages;
  }

  void stop() {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    changed_.notify_all();
  }

  [[nodiscard]] std::size_t count() const { return count_; }

 private:
  struct Slot {
    MessageList messages;
    std::exception_ptr failure;
    bool isDone = false;
  };

  Slot& slotOf(std::size_t index) { return slots_[index % slots_.size()]; }
  [[nodiscard]] bool canTake() const { return next_ < count_ && next_ < taken_ + slots_.size(); }

  void readNext(std::unique_lock<std::mutex>& lock, MessageReader& reader) {
    const std::size_t index = next_++;
    lock.unlock();
    Slot done;
    done.isDone = true;
    try {
      const std::size_t begin = index * chunkSize_;
      readChunk(bytes_, arriving_, begin, std::min(begin + chunkSize_, bytes_.size()), reader, done.messages);
    } catch (...) {
      done.failure = std::current_exception();
    }
    lock.lock();
    slotOf(index) = std::move(done);
    changed_.notify_all();
  }

  const std::string_view bytes_;
  const ArrivingBytes& arriving_;
  const std::size_t chunkSize_;
  const std::size_t count_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Slot> slots_;  // a ring of the chunks from `taken_` on
  std::size_t next_ = 0;     // the first chunk that no thread has taken up
  std::size_t taken_ = 0;    // the first chunk that the caller has not got yet
  bool isStopped_ = false;
};

// The threads beside that of the caller. Whatever happens, they end before the chunks go.
class Helpers {
 public:
  explicit Helpers(Chunks& chunks) : chunks_(chunks) {}
  Helpers(const Helpers&) = delete;
  Helpers& operator=(const Helpers&) = delete;
  ~Helpers() {
    chunks_.stop();
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

  // A thread that the system refuses is not missed: the caller does all work that nobody else takes.
  void add(const std::function<void()>& work) {
    try {
      threads_.emplace_back(work);
    } catch (const std::system_error&) {
    }
  }

 private:
  Chunks& chunks_;
  std::vector<std::thread> threads_;
};

}  // namespace

ChunkedReader::ChunkedReader(std::shared_ptr<const Archive> archive, const Text& libraryID,
                             const Text& libraryName)
    : archive_(std::move(archive)),
      libraryID_(libraryID),
      libraryName_(libraryName),
      chunkSize_(defaultChunkSize),
      helperCount_(std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostHelpers + 1) - 1) {}

void ChunkedReader::setChunks(std::size_t chunkSize, std::size_t helperCount) {
  chunkSize_ = chunkSize;
  helperCount_ = helperCount;
}

void ChunkedReader::read(const std::function<void(std::shared_ptr<const EmailMessage>)>& visit) {
  const std::size_t window = 4 * (helperCount_ + 1);
  const std::string_view bytes = archive_->bytes();
  const ArrivingBytes allThere(bytes.size(), bytes.size());
  Chunks chunks(bytes, arriving_ != nullptr ? *arriving_ : allThere, chunkSize_, window);

  Helpers helpers(chunks);
  for (std::size_t i = 0; i < helperCount_ && i + 1 < chunks.count(); ++i) {
    helpers.add([this, &chunks] {
      MessageReader reader(archive_, libraryID_, libraryName_);
      chunks.help(reader);
    });
  }
  MessageReader reader(archive_, libraryID_, libraryName_);
  for (std::size_t i = 0; i < chunks.count(); ++i) {
    for (auto& message : chunks.take(i, reader)) {
      visit(std::move(message));
    }
  }
}

}  // namespace tidewrack
