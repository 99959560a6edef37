#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace tidewrack::bench {

/// What the messages of a generated archive are like.
enum class ArchiveKind {
  large,  ///< about 77 KB a message, long headers, two thirds of the bytes Base64 attachments
  small,  ///< about 4 KB a message, few attachments
};

enum class LineEnds { lf, crlf };

/// What to generate. The same plan gives the same bytes on every machine.
struct ArchivePlan {
  ArchiveKind kind = ArchiveKind::small;
  std::uint64_t bytes = 1'000'000;  ///< the archive ends with the first message that reaches this size
  std::uint64_t seed = 1;
  LineEnds lineEnds = LineEnds::lf;
};

struct ArchiveSummary {
  std::uint64_t bytes = 0;
  std::uint64_t messages = 0;
  std::uint64_t attachments = 0;
  std::uint64_t attachmentBytes = 0;  ///< in their encoded form
};

/// Writes an archive as a mail provider exports it: "From " lines, labels, threads, encoded words and bodies
/// in many charsets, quoted-printable and Base64 texts, alternatives, inline images and attachments.
/// `write` gets each message once it is whole, beginning with its "From " line.
ArchiveSummary generateArchive(const ArchivePlan& plan, const std::function<void(std::string_view)>& write);

}  // namespace tidewrack::bench
