#include "platform/program_version.h"

#include <string_view>

namespace tidewrack {
namespace {

std::optional<std::string> unlessEmpty(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

}  // namespace

const ProgramVersion& programVersion() {
  static const ProgramVersion present{unlessEmpty(TIDEWRACK_VERSION), unlessEmpty(TIDEWRACK_BUILD)};
  return present;
}

}  // namespace tidewrack
