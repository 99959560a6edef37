// Runs a fuzz target over the files of a folder, so that inputs once found are tested with every compiler.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "Usage: " << argv[0] << " FOLDER\n";
    return 2;
  }
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::cout << file.filename().string() << std::endl;  // Seen before a crash.
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    // A block of the very size, so that a read past the end is noticed.
    const auto data = std::make_unique<std::uint8_t[]>(content.size());
    std::copy(content.begin(), content.end(), data.get());
    LLVMFuzzerTestOneInput(data.get(), content.size());
  }
  std::cout << files.size() << " inputs\n";
  return files.empty() ? 1 : 0;
}
