#include "platform/resources.h"

#include <system_error>

namespace tidewrack {

std::filesystem::path resourceFolder(const char* name, const char* buildFolder) {
  std::error_code failed;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failed);
  if (!failed) {
    auto installed = program.parent_path().parent_path() / "share" / name;
    if (program.parent_path().filename() == "bin" && std::filesystem::is_directory(installed, failed)) {
      return installed;
    }
  }
  return buildFolder;
}

}  // namespace tidewrack
