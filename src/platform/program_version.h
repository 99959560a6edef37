#pragma once

#include <optional>
#include <string>

namespace tidewrack {

/// Which program this is. A part that a packager has left out is absent.
struct ProgramVersion {
  std::optional<std::string> version;  ///< For people: "0.1.0".
  std::optional<std::string> build;    ///< Counts the builds that were given away: "1".
};

/// That of this program.
const ProgramVersion& programVersion();

}  // namespace tidewrack
