#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// Turns archive files into messages. The file is mapped, never copied: bodies and attachment data of the
/// messages are slices of it, decoded when asked for, and keep the mapping alive (also when the file is
/// unlinked meanwhile). Two cores are used; the order of the result is that of the file.
/// Stateless; safe from any thread.
class MBOXImporter {
 public:
  /// All messages of all files, newest first (stable). A file that cannot be read is skipped, with one line
  /// "[MBOXImporter] Failed to parse NAME: REASON" on standard output.
  static MessageList importFiles(const std::vector<std::filesystem::path>& urls, const Text& libraryID,
                                 const Text& libraryName);

  /// The messages of one file in file order. Throws FileFailure when the file cannot be read.
  static MessageList parseFile(const std::filesystem::path& url, const Text& libraryID,
                               const Text& libraryName);

  /// The same, handing over each message as soon as it is parsed, in file order and on the calling thread,
  /// so that a file of any size passes through in bounded memory.
  static void forEachMessage(const std::filesystem::path& url, const Text& libraryID, const Text& libraryName,
                             const std::function<void(std::shared_ptr<const EmailMessage>)>& visit);

  /// The messages of archive bytes held in memory, in their order.
  static MessageList parseBytes(std::string_view bytes, const Text& libraryID, const Text& libraryName);
};

}  // namespace tidewrack
