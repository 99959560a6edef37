#include "platform/mapped_file.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/descriptor.h"

namespace tidewrack {
namespace {

// The mappings that the signal handler knows. A handler may take no lock, hence the fixed number and the
// atomics; a mapping beyond that number is not guarded.
struct GuardedRange {
  std::atomic<std::uintptr_t> begin{0};  // 0: free
  std::atomic<std::uintptr_t> end{0};
  std::atomic<bool> hasLostPages{false};
};
std::array<GuardedRange, 256> guardedRanges;
std::mutex guardedRangesMutex;  // for adding and removing
struct sigaction previousAction;

// The range that holds the address; null where none does.
GuardedRange* guardedRange(std::uintptr_t address) noexcept {
  for (GuardedRange& range : guardedRanges) {
    const std::uintptr_t begin = range.begin.load(std::memory_order_acquire);
    if (begin != 0 && address >= begin && address < range.end.load(std::memory_order_acquire)) {
      return &range;
    }
  }
  return nullptr;
}

// Puts zeros in the place of a page that the file no longer has.
void handleBusError(int signal, siginfo_t* info, void* context) {
  const int savedError = errno;
  const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
  const bool isFault = info->si_code > 0;  // not sent by somebody
  if (GuardedRange* const range = isFault ? guardedRange(address) : nullptr) {
    auto* const page =
        reinterpret_cast<void*>(address & ~(pageSize - 1));  // NOLINT(performance-no-int-to-ptr)
    if (::mmap(page, pageSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED) {
      range->hasLostPages.store(true, std::memory_order_release);
      errno = savedError;
      return;
    }
  }
  if ((previousAction.sa_flags & SA_SIGINFO) != 0) {
    previousAction.sa_sigaction(signal, info, context);
  } else if (previousAction.sa_handler != SIG_DFL && previousAction.sa_handler != SIG_IGN) {
    previousAction.sa_handler(signal);
  } else {
    // Ends the process on return, as it should.
    ::sigaction(SIGBUS, &previousAction, nullptr);
    ::raise(SIGBUS);
  }
  errno = savedError;
}

void guard(void* address, std::size_t size) {
  static std::once_flag once;
  std::call_once(once, [] {
    struct sigaction action {};
    action.sa_sigaction = handleBusError;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGBUS, &action, &previousAction);
  });
  const std::lock_guard lock(guardedRangesMutex);
  for (GuardedRange& range : guardedRanges) {
    if (range.begin.load(std::memory_order_relaxed) == 0) {
      const auto begin = reinterpret_cast<std::uintptr_t>(address);
      range.end.store(begin + size, std::memory_order_release);
      range.hasLostPages.store(false, std::memory_order_release);
      range.begin.store(begin, std::memory_order_release);
      return;
    }
  }
}

void unguard(void* address) {
  const std::lock_guard lock(guardedRangesMutex);
  for (GuardedRange& range : guardedRanges) {
    if (range.begin.load(std::memory_order_relaxed) == reinterpret_cast<std::uintptr_t>(address)) {
      range.begin.store(0, std::memory_order_release);
      return;
    }
  }
}

}  // namespace

MappedFile::MappedFile(const std::filesystem::path& path) : MappedFile(path, std::nullopt) {}

MappedFile::MappedFile(const std::filesystem::path& path, std::size_t size)
    : MappedFile(path, std::optional(size)) {}

MappedFile::MappedFile(const std::filesystem::path& path, std::optional<std::size_t> expectedSize) {
  // Without O_NONBLOCK the opening of a pipe would wait for a writer.
  const Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (descriptor.number() < 0 || ::fstat(descriptor.number(), &status) != 0) {
    throw readFailure(path, errno);
  }
  if (!S_ISREG(status.st_mode)) {
    throw readFailure(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  }
  const std::size_t size = expectedSize.value_or(static_cast<std::size_t>(status.st_size));
  if (size == 0) {
    return;  // There is nothing to map.
  }
  void* const address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor.number(), 0);
  if (address == MAP_FAILED) {
    throw readFailure(path, errno);
  }
  ::madvise(address, size, MADV_SEQUENTIAL);
  guard(address, size);
  address_ = address;
  size_ = size;
}

MappedFile::MappedFile(MappedFile&& other) noexcept
    : address_(std::exchange(other.address_, nullptr)), size_(std::exchange(other.size_, 0)) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  std::swap(address_, other.address_);
  std::swap(size_, other.size_);
  return *this;
}

bool MappedFile::hasLostPages() const noexcept {
  const GuardedRange* const range = guardedRange(reinterpret_cast<std::uintptr_t>(address_));
  return range != nullptr && range->hasLostPages.load(std::memory_order_acquire);
}

MappedFile::~MappedFile() {
  if (address_ != nullptr) {
    unguard(address_);
    ::munmap(address_, size_);
  }
}

}  // namespace tidewrack
