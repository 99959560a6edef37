#pragma once

#include <filesystem>

namespace tidewrack {

/// A folder of files that belong to the program: "share/`name`" of the place it is installed in, when the
/// running program lies in the "bin" beside it, otherwise `buildFolder`, where the build tree has them.
/// Safe from any thread.
std::filesystem::path resourceFolder(const char* name, const char* buildFolder);

}  // namespace tidewrack
