#pragma once

#include <filesystem>
#include <fstream>

#include "platform/desktop_services.h"
#include "platform/failure.h"

namespace tidewrack {

/// Whether what lies in this folder can be thrown into a trash (on some file systems there is none).
inline bool hasTrash(const std::filesystem::path& folder) {
  const auto probe = folder / "probe";
  std::ofstream(probe) << "probe";
  try {
    moveToTrash(probe);
    return true;
  } catch (const FileFailure&) {
    std::filesystem::remove(probe);
    return false;
  }
}

}  // namespace tidewrack
