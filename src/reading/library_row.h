#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "library/library_catalog.h"
#include "library/library_discovery.h"

namespace tidewrack {

/// "1 message", "0 messages".
std::string messageCountText(std::int64_t count);

/// What one row of the list of libraries shows.
struct LibraryRow {
  Text id;
  std::string_view icon;
  std::string name;
  std::string badge;      ///< Beside the name; empty for a library with a file of its own.
  std::string countText;  ///< Beside "envelope.fill".
  std::string origin;     ///< The stored file, or where a library without one comes from.
  bool isSelected = false;

  friend bool operator==(const LibraryRow&, const LibraryRow&) = default;
};

LibraryRow makeLibraryRow(const MBOXLibrary& library, std::int64_t messageCount, bool isSelected);

/// What a row of the list offers to do, in this order.
enum class LibraryRowAction { select, rename, remove };
std::string_view icon(LibraryRowAction action);
/// The tip of its button, which shows no text.
std::string help(LibraryRowAction action);

/// The card of a library that is known from synced messages alone.
struct DiscoveredLibraryCard {
  struct Metric {
    std::string_view icon;
    std::string title;
    std::string value;
    friend bool operator==(const Metric&, const Metric&) = default;
  };
  Text id;
  std::string name;
  std::string countText;
  std::vector<Metric> metrics;  ///< The dates only where there are any.
  std::vector<std::string> labels;
  std::vector<std::string> categories;

  friend bool operator==(const DiscoveredLibraryCard&, const DiscoveredLibraryCard&) = default;
};

DiscoveredLibraryCard makeDiscoveredLibraryCard(const DiscoveredLibrary& library);

/// The button of a card.
struct AdoptButton {
  std::string_view icon;
  std::string title;
  bool isEnabled;
  bool showsSpinner;
};
AdoptButton makeAdoptButton(bool isAdopting);

}  // namespace tidewrack
