// tidewrack-generate: writes a mail archive for measurements and tests.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "archive_generator.h"

namespace {

constexpr const char* usage =
    "Usage: tidewrack-generate [--kind large|small] [--size BYTES] [--seed N] [--line-ends lf|crlf] FILE\n"
    "Writes a mail archive; the same options give the same bytes.\n";

}  // namespace

int main(int argc, char** argv) {
  tidewrack::bench::ArchivePlan plan;
  std::string path;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    const std::string value = i + 1 < argc ? argv[i + 1] : "";
    if (option == "--help") {
      std::fputs(usage, stdout);
      return 0;
    }
    if (option == "--kind" && (value == "large" || value == "small")) {
      plan.kind =
          value == "large" ? tidewrack::bench::ArchiveKind::large : tidewrack::bench::ArchiveKind::small;
      ++i;
    } else if (option == "--line-ends" && (value == "lf" || value == "crlf")) {
      plan.lineEnds = value == "lf" ? tidewrack::bench::LineEnds::lf : tidewrack::bench::LineEnds::crlf;
      ++i;
    } else if (option == "--size" && !value.empty()) {
      plan.bytes = std::strtoull(value.c_str(), nullptr, 10);
      ++i;
    } else if (option == "--seed" && !value.empty()) {
      plan.seed = std::strtoull(value.c_str(), nullptr, 10);
      ++i;
    } else if (!option.empty() && option[0] != '-' && path.empty()) {
      path = option;
    } else {
      std::fputs(usage, stderr);
      return 2;
    }
  }
  if (path.empty()) {
    std::fputs(usage, stderr);
    return 2;
  }
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) {
    std::fprintf(stderr, "tidewrack-generate: %s: %s\n", path.c_str(), std::strerror(errno));
    return 1;
  }
  const auto summary = tidewrack::bench::generateArchive(
      plan, [&](std::string_view message) { std::fwrite(message.data(), 1, message.size(), file); });
  const bool failed = std::ferror(file) != 0;
  if (std::fclose(file) != 0 || failed) {
    std::fprintf(stderr, "tidewrack-generate: %s: %s\n", path.c_str(), std::strerror(errno));
    return 1;
  }
  std::printf("%s: %llu bytes, %llu messages, %llu attachments with %llu bytes in Base64\n", path.c_str(),
              static_cast<unsigned long long>(summary.bytes),
              static_cast<unsigned long long>(summary.messages),
              static_cast<unsigned long long>(summary.attachments),
              static_cast<unsigned long long>(summary.attachmentBytes));
  return 0;
}
