#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "mail/content.h"
#include "mail/transfer_decoding.h"
#include "platform/mapped_file.h"
#include "platform/text.h"

namespace tidewrack {

/// The bytes that messages are made from: those of a mapped file, or bytes in memory. Immutable; shared by
/// all messages and their contents.
class Archive {
 public:
  explicit Archive(MappedFile file) : file_(std::move(file)), bytes_(file_.bytes()) {}
  explicit Archive(std::string bytes) : memory_(std::move(bytes)), bytes_(memory_) {}
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;

  [[nodiscard]] std::string_view bytes() const noexcept { return bytes_; }
  /// Whether zeros have come into the place of bytes that the file did not hold.
  [[nodiscard]] bool hasLostPages() const noexcept { return file_.hasLostPages(); }

 private:
  MappedFile file_;
  std::string memory_;
  std::string_view bytes_;
};

/// Encoded bytes of an archive.
struct ArchiveSlice {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  bool isClean = true;  ///< The bytes are used as they stand; otherwise they are cleaned first.
  TransferEncoding encoding = TransferEncoding::identity;
};

inline constexpr std::uint64_t unknownSize = std::numeric_limits<std::uint64_t>::max();

/// The slice behind its transfer encoding, decoded whenever it is asked for.
Content attachmentContent(const std::shared_ptr<const Archive>& archive, const ArchiveSlice& slice);

/// The same as text in a charset (see decodeText; an empty name stands for none). `size` counts the bytes of
/// the decoded text.
Content textContent(const std::shared_ptr<const Archive>& archive, const ArchiveSlice& slice,
                    const Text& charset, std::uint64_t size);

}  // namespace tidewrack
