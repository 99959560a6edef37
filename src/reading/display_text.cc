#include "reading/display_text.h"

namespace tidewrack {

std::string shortenedLine(std::string_view text, std::size_t maximumBytes) {
  const bool isTooLong = text.size() > maximumBytes;
  if (isTooLong) {
    std::size_t end = maximumBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
      --end;
    }
    text = text.substr(0, end);
  }
  std::string line;
  line.reserve(text.size());
  for (const char byte : text) {
    if (byte == '\0') {
      line += "\uFFFD";
    } else {
      line += byte;
    }
  }
  return isTooLong ? line + "…" : line;
}

}  // namespace tidewrack
