#include "reading/html_load_memory.h"

namespace tidewrack {

std::optional<std::string> HTMLLoadMemory::documentToLoad(const SharedHTML& html, HTMLAppearance appearance,
                                                          bool invertContent) {
  const bool isSameHTML = lastLoadedHTML_ && (lastLoadedHTML_ == html || *lastLoadedHTML_ == *html);
  if (isSameHTML && lastAppearance_ == appearance && lastInvert_ == invertContent) {
    return std::nullopt;
  }
  lastLoadedHTML_ = html;
  lastAppearance_ = appearance;
  lastInvert_ = invertContent;
  return buildDocument(*html, appearance, invertContent);
}

void HTMLLoadMemory::forget() {
  *this = HTMLLoadMemory();
}

}  // namespace tidewrack
