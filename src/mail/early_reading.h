#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>

#include "mail/archive.h"
#include "mail/records.h"
#include "platform/arriving_bytes.h"

namespace tidewrack {

/// What was read of an archive while its file was being written.
struct EarlyMessages {
  MessageList messages;        ///< As MBOXImporter::importFiles gives them, newest first.
  std::uint64_t fileSize = 0;  ///< Bytes of the archive that they are the messages of.

  /// Whether the file is still there, with that size.
  [[nodiscard]] bool areOf(const std::filesystem::path& file) const;
};

/// Reads an archive file, on threads of its own, while another thread writes it from its beginning to its
/// end. Reading early is never needed: whatever goes wrong gives no messages, and the file is to be read when
/// it is whole. Used by the thread that writes.
class EarlyReading {
 public:
  /// The file exists and will have `size` bytes, so far as is known.
  EarlyReading(const std::filesystem::path& file, std::uint64_t size, const Text& libraryID,
               const Text& libraryName);
  EarlyReading(const EarlyReading&) = delete;
  EarlyReading& operator=(const EarlyReading&) = delete;
  /// Ends the reading as soon as what has arrived is read.
  ~EarlyReading();

  /// The first `count` bytes of the file are there.
  void arrive(std::uint64_t count);

  /// Nothing more will arrive. Waits for the end of the reading; nothing unless it was one of all bytes.
  std::optional<EarlyMessages> finish();

 private:
  void read(const std::shared_ptr<const Archive>& archive, const Text& libraryID, const Text& libraryName);

  ArrivingBytes arriving_;
  std::optional<MessageList> messages_;  // set by the thread at its end
  std::thread thread_;
};

}  // namespace tidewrack
