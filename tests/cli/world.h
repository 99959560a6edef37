#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/program.h"
#include "support/temporary_folder.h"

namespace tidewrack {

/// The real tidewrackctl with data, settings and caches of its own.
class World {
 public:
  World() : program_(TIDEWRACK_BINARY_DIR "/tidewrackctl") {
    program_.setEnvironment("HOME", folder_ / "home");
    program_.setEnvironment("XDG_DATA_HOME", folder_ / "data");
    program_.setEnvironment("XDG_CONFIG_HOME", folder_ / "config");
    program_.setEnvironment("XDG_CACHE_HOME", folder_ / "cache");
    program_.setEnvironment("LC_ALL", "C.UTF-8");
  }

  template <typename... Arguments>
  [[nodiscard]] ProgramResult run(const Arguments&... arguments) const {
    return program_.run({std::string(arguments)...});
  }
  [[nodiscard]] const Program& program() const { return program_; }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }
  [[nodiscard]] std::filesystem::path applicationFolder() const { return folder_ / "data/Tidewrack"; }

  /// Writes a file into the world and gives its path.
  [[nodiscard]] std::string file(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return folder_ / name;
  }

 private:
  TemporaryFolder folder_;
  Program program_;
};

inline std::string sampleArchive() {
  return std::string(TIDEWRACK_SOURCE_DIR) + "/data/sample.mbox";
}

/// The lines of a text, without their line feeds.
inline std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    result.push_back(line);
  }
  return result;
}

/// The columns of a line in a pipe.
inline std::vector<std::string> columns(const std::string& line) {
  std::vector<std::string> result(1);
  for (const char c : line) {
    if (c == '\t') {
      result.emplace_back();
    } else {
      result.back() += c;
    }
  }
  return result;
}

}  // namespace tidewrack
