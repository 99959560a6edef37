#include "mail/mbox_importer.h"

#include <cstdio>
#include <string>

#include "mail/archive.h"
#include "mail/chunked_reader.h"
#include "platform/failure.h"
#include "platform/files.h"

namespace tidewrack {
namespace {

MessageList allMessages(std::shared_ptr<const Archive> archive, const Text& libraryID,
                        const Text& libraryName) {
  MessageList messages;
  ChunkedReader(std::move(archive), libraryID, libraryName)
      .read([&messages](std::shared_ptr<const EmailMessage> message) {
        messages.push_back(std::move(message));
      });
  return messages;
}

}  // namespace

MessageList MBOXImporter::importFiles(const std::vector<std::filesystem::path>& urls, const Text& libraryID,
                                      const Text& libraryName) {
  MessageList messages;
  for (const auto& url : urls) {
    try {
      forEachMessage(url, libraryID, libraryName, [&messages](std::shared_ptr<const EmailMessage> message) {
        messages.push_back(std::move(message));
      });
    } catch (const FileFailure& failure) {
      std::printf("[MBOXImporter] Failed to parse %s: %s\n", displayPath(url.filename()).c_str(),
                  failure.what());
    }
  }
  sortNewestFirst(messages);
  return messages;
}

MessageList MBOXImporter::parseFile(const std::filesystem::path& url, const Text& libraryID,
                                    const Text& libraryName) {
  return allMessages(std::make_shared<Archive>(MappedFile(url)), libraryID, libraryName);
}

void MBOXImporter::forEachMessage(const std::filesystem::path& url, const Text& libraryID,
                                  const Text& libraryName,
                                  const std::function<void(std::shared_ptr<const EmailMessage>)>& visit) {
  ChunkedReader(std::make_shared<Archive>(MappedFile(url)), libraryID, libraryName).read(visit);
}

MessageList MBOXImporter::parseBytes(std::string_view bytes, const Text& libraryID, const Text& libraryName) {
  return allMessages(std::make_shared<Archive>(std::string(bytes)), libraryID, libraryName);
}

}  // namespace tidewrack
