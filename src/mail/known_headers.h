#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "mail/headers.h"

namespace tidewrack {

/// The headers that a message or a MIME part is made from.
enum class KnownHeader : std::uint8_t {
  subject,
  from,
  to,
  cc,
  date,
  messageID,
  inReplyTo,
  references,
  labels,
  contentType,
  contentTransferEncoding,
  contentDisposition,
  contentID,
};
inline constexpr std::size_t knownHeaderCount = 13;

/// The values of the known headers of one block, as views into its text where they stand on one line. Made to
/// be used again for the next block, with the memory that it has. It says the same as the header map of the
/// block does. One thread at a time.
class KnownHeaders {
 public:
  KnownHeaders() = default;
  explicit KnownHeaders(const HeaderMap& headers);

  /// Reads the header block at the beginning of clean text, which must outlive the values. Returns where the
  /// body begins (the size of the text when it is all headers).
  std::size_t read(std::string_view text);

  [[nodiscard]] std::optional<std::string_view> operator[](KnownHeader header) const noexcept {
    return values_[static_cast<std::size_t>(header)].get();
  }

 private:
  class Value {
   public:
    void clear() noexcept { isPresent_ = false; }
    void set(std::string_view text) noexcept;
    void append(std::string_view text);
    [[nodiscard]] std::optional<std::string_view> get() const noexcept;

   private:
    std::string_view line_;  // the value, while it stands on one line
    std::string joined_;     // the value, once it is folded
    bool isPresent_ = false;
    bool isFolded_ = false;
  };
  struct Reader;

  std::array<Value, knownHeaderCount> values_;
};

/// `attachmentFileName` of mail/mime.h on the known headers.
std::optional<std::string> attachmentFileName(const KnownHeaders& headers);

}  // namespace tidewrack
