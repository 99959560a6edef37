#include "mail/early_reading.h"

#include <exception>
#include <system_error>
#include <utility>

#include "mail/chunked_reader.h"

namespace tidewrack {
namespace {

constexpr std::uint64_t largestPageSize = std::uint64_t{64} << 10U;  // bytes

}  // namespace

bool EarlyMessages::areOf(const std::filesystem::path& file) const {
  std::error_code missing;
  const std::uintmax_t size = std::filesystem::file_size(file, missing);
  return !missing && size == fileSize;
}

EarlyReading::EarlyReading(const std::filesystem::path& file, std::uint64_t size, const Text& libraryID,
                           const Text& libraryName)
    : arriving_(size) {
  try {
    auto archive = std::make_shared<const Archive>(MappedFile(file, size));
    thread_ = std::thread([this, archive = std::move(archive), libraryID, libraryName] {
      read(archive, libraryID, libraryName);
    });
  } catch (const std::exception&) {
    // No mapping, no thread: no early messages.
  }
}

EarlyReading::~EarlyReading() {
  arriving_.end();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void EarlyReading::read(const std::shared_ptr<const Archive>& archive, const Text& libraryID,
                        const Text& libraryName) {
  try {
    MessageList messages;
    ChunkedReader reader(archive, libraryID, libraryName);
    reader.follow(arriving_);
    reader.read(
        [&messages](std::shared_ptr<const EmailMessage> message) { messages.push_back(std::move(message)); });
    if (!archive->hasLostPages()) {
      sortNewestFirst(messages);
      messages_ = std::move(messages);
    }
  } catch (const std::exception&) {
    // The copy has ended too early, or memory has run out.
  }
}

// A page is looked at when it is whole: not every file system brings later bytes into a page that is mapped.
void EarlyReading::arrive(std::uint64_t count) {
  arriving_.arrive(count < arriving_.total() ? count - count % largestPageSize : count);
}

std::optional<EarlyMessages> EarlyReading::finish() {
  arriving_.end();
  if (thread_.joinable()) {
    thread_.join();
  }
  if (!messages_) {
    return std::nullopt;
  }
  return EarlyMessages{*std::exchange(messages_, std::nullopt), arriving_.total()};
}

}  // namespace tidewrack
