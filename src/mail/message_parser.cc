#include "mail/message_parser.h"

#include "mail/clean_text.h"
#include "mail/message_reader.h"

namespace tidewrack {

EmailMessage parseMessage(std::string_view raw, const Text& libraryID, const Text& libraryName) {
  return MessageReader(std::make_shared<Archive>(cleanText(raw)), libraryID, libraryName).readWhole();
}

}  // namespace tidewrack
