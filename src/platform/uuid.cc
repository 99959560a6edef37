#include "platform/uuid.h"

#include <cstring>

#include <sys/random.h>

namespace tidewrack {
namespace {

// Random bytes of the kernel, fetched for many identifiers at once. One a thread.
class RandomBytes {
 public:
  void take(std::array<std::uint8_t, 16>& bytes) {
    if (next_ == buffer_.size()) {
      fill();
    }
    std::memcpy(bytes.data(), buffer_.data() + next_, bytes.size());
    next_ += bytes.size();
  }

 private:
  void fill() {
    std::size_t filled = 0;
    while (filled < buffer_.size()) {
      // Once the system has started, this can only be interrupted, not fail.
      const auto count = getrandom(buffer_.data() + filled, buffer_.size() - filled, 0);
      filled += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    next_ = 0;
  }

  std::array<std::uint8_t, 4096> buffer_;
  std::size_t next_ = 4096;
};

int hexValue(char digit) noexcept {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  const char lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool hyphenFollows(std::size_t byteIndex) noexcept {
  return byteIndex == 3 || byteIndex == 5 || byteIndex == 7 || byteIndex == 9;
}

std::string format(const std::array<std::uint8_t, 16>& bytes, const char* digits) {
  std::string text;
  text.reserve(36);
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    text.push_back(digits[bytes[index] >> 4U]);
    text.push_back(digits[bytes[index] & 0x0FU]);
    if (hyphenFollows(index)) {
      text.push_back('-');
    }
  }
  return text;
}

}  // namespace

UUID UUID::make() {
  thread_local RandomBytes random;
  UUID id;
  random.take(id.bytes);
  id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0FU) | 0x40U);  // version 4
  id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3FU) | 0x80U);  // variant of RFC 4122
  return id;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  if (text.size() != 36) {
    return std::nullopt;
  }
  UUID id;
  std::size_t position = 0;
  for (std::size_t index = 0; index < id.bytes.size(); ++index) {
    const int high = hexValue(text[position]);
    const int low = hexValue(text[position + 1]);
    if (high < 0 || low < 0) {
      return std::nullopt;
    }
    id.bytes[index] = static_cast<std::uint8_t>(high * 16 + low);
    position += 2;
    if (hyphenFollows(index) && text[position++] != '-') {
      return std::nullopt;
    }
  }
  return id;
}

std::string UUID::string() const {
  return format(bytes, "0123456789ABCDEF");
}

std::string UUID::lowerCaseString() const {
  return format(bytes, "0123456789abcdef");
}

}  // namespace tidewrack

std::size_t std::hash<tidewrack::UUID>::operator()(const tidewrack::UUID& id) const noexcept {
  std::array<std::size_t, 16 / sizeof(std::size_t)> words{};
  std::memcpy(words.data(), id.bytes.data(), id.bytes.size());
  return words.front() ^ words.back();
}
