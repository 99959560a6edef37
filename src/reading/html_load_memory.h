#pragma once

#include <memory>
#include <optional>
#include <string>

#include "reading/html_document.h"

namespace tidewrack {

/// HTML that is shared and never changes; null stands for none.
using SharedHTML = std::shared_ptr<const std::string>;

/// What a web view was last given. It lives as long as the view, and keeps a page with its scroll position
/// from being loaded again when nothing has changed. Main thread only.
class HTMLLoadMemory {
 public:
  /// The document to load, or nothing when the view already shows it. Remembers what it gives out. `html`
  /// is not null.
  std::optional<std::string> documentToLoad(const SharedHTML& html, HTMLAppearance appearance,
                                            bool invertContent);
  /// Forgets the last load, for a view that has lost its page.
  void forget();
  /// Whether nothing has been given out, or all of it forgotten.
  [[nodiscard]] bool isEmpty() const { return !lastLoadedHTML_; }

 private:
  SharedHTML lastLoadedHTML_;
  std::optional<HTMLAppearance> lastAppearance_;
  std::optional<bool> lastInvert_;
};

}  // namespace tidewrack
