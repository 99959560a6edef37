#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tidewrack::bench {

/// Writes messages as the files of a Maildir, some thousands a folder, for the indexers of other mail tools.
class MaildirWriter {
 public:
  explicit MaildirWriter(std::filesystem::path folder);
  /// One message of an archive, beginning with its "From " line, which is left out.
  void write(std::string_view message);

 private:
  std::filesystem::path folder_;
  std::uint64_t count_ = 0;
};

/// Seconds that `mu index` or `notmuch new` take for the Maildir into a fresh database below `scratch`, which
/// is removed again; below zero when the tool is not installed.
double muIndexSeconds(const std::filesystem::path& maildir, const std::filesystem::path& scratch);
double notmuchNewSeconds(const std::filesystem::path& maildir, const std::filesystem::path& scratch);

}  // namespace tidewrack::bench
