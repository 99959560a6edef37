#include <memory>
#include <string>

#include "fuzz/fuzz.h"
#include "mail/archive.h"
#include "mail/chunked_reader.h"
#include "platform/unicode.h"

// An archive gives the same messages in whatever chunks it is read.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const auto archive = std::make_shared<Archive>(std::string(fuzz::bytesOf(data, size)));
  MessageList whole;
  ChunkedReader(archive, "library", "name").read([&](auto message) { whole.push_back(std::move(message)); });
  ChunkedReader pieces(archive, "library", "name");
  pieces.setChunks(7, 0);
  std::size_t index = 0;
  pieces.read([&](const std::shared_ptr<const EmailMessage>& message) {
    fuzz::require(index < whole.size());
    const EmailMessage& other = *whole[index++];
    fuzz::require(message->subject == other.subject && message->snippet == other.snippet);
    fuzz::require(message->plainBody == other.plainBody && message->htmlBody == other.htmlBody);
    fuzz::require(message->attachments.size() == other.attachments.size());
    for (std::size_t i = 0; i < other.attachments.size(); ++i) {
      fuzz::require(message->attachments[i].data == other.attachments[i].data);
    }
  });
  fuzz::require(index == whole.size());
  return 0;
}
