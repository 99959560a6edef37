#include "export/export_file.h"

#include <optional>

#include "platform/atomic_file.h"

namespace tidewrack {

void exportToFile(const MessageList& messages, ExportUtility::ExportFormat format,
                  const std::filesystem::path& file, Date now, const ExportUtility::Progress& progress) {
  std::optional<AtomicFile> output;
  const ExportUtility::Sink sink = [&](std::string_view bytes) {
    if (!output) {
      output.emplace(file);
    }
    output->write(bytes);
  };
  ExportUtility::exportMessages(messages, format, sink, now, progress);
  output->commit();
}

std::uint64_t exportSizeEstimate(const MessageList& messages) {
  std::uint64_t size = 0;
  for (const auto& message : messages) {
    size += message->plainBody ? message->plainBody->size() : 0;
    size += message->htmlBody ? message->htmlBody->size() : 0;
    for (const auto& attachment : message->attachments) {
      size += attachment.data.size();
    }
  }
  return size;
}

}  // namespace tidewrack
