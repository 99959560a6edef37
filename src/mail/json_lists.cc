#include "mail/json_lists.h"

#include <algorithm>
#include <array>

#include "mail/json_coding.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Bytes that cannot stand for themselves in a JSON string (RFC 8259, section 7).
constexpr auto needsEscape = [] {
  std::array<bool, 256> bytes{};
  for (std::size_t byte = 0; byte < 0x20; ++byte) {
    bytes[byte] = true;
  }
  bytes['"'] = true;
  bytes['\\'] = true;
  return bytes;
}();

class ListReader {
 public:
  explicit ListReader(std::string_view json) : rest_(json) {}

  // Reads an array whose elements `readElement` reads; whether this is all there was.
  template <typename ReadElement>
  bool readArray(const ReadElement& readElement) {
    if (!skip("[")) {
      return false;
    }
    if (!skip("]")) {
      do {
        if (!readElement()) {
          return false;
        }
      } while (skip(","));
      if (!skip("]")) {
        return false;
      }
    }
    return rest_.empty();
  }

  bool skip(std::string_view text) {
    if (!rest_.starts_with(text)) {
      return false;
    }
    rest_.remove_prefix(text.size());
    return true;
  }

  bool readString(std::string_view& string) {
    if (!skip("\"")) {
      return false;
    }
    std::size_t size = 0;
    unsigned char all = 0;
    while (size < rest_.size() && !needsEscape[static_cast<unsigned char>(rest_[size])]) {
      all |= static_cast<unsigned char>(rest_[size]);
      ++size;
    }
    string = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return skip("\"") && (all < 0x80 || isValidUTF8(string));
  }

 private:
  std::string_view rest_;
};

void appendString(std::string& json, std::string_view text) {
  constexpr std::string_view hex = "0123456789abcdef";
  json.push_back('"');
  while (!text.empty()) {
    std::size_t size = 0;
    while (size < text.size() && !needsEscape[static_cast<unsigned char>(text[size])]) {
      ++size;
    }
    json.append(text, 0, size);
    text.remove_prefix(size);
    if (text.empty()) {
      break;
    }
    json.push_back('\\');
    switch (const char byte = text.front()) {
      case '"':
      case '\\':
        json.push_back(byte);
        break;
      case '\b':
        json.push_back('b');
        break;
      case '\f':
        json.push_back('f');
        break;
      case '\n':
        json.push_back('n');
        break;
      case '\r':
        json.push_back('r');
        break;
      case '\t':
        json.push_back('t');
        break;
      default:
        json += "u00";
        json.push_back(hex[static_cast<unsigned char>(byte) >> 4U]);
        json.push_back(hex[static_cast<unsigned char>(byte) & 0x0FU]);
    }
    text.remove_prefix(1);
  }
  json.push_back('"');
}

template <typename Value, typename Append>
std::string encodeList(const std::vector<Value>& values, const Append& append) {
  std::string json = "[";
  for (const Value& value : values) {
    if (json.size() > 1) {
      json.push_back(',');
    }
    append(json, value);
  }
  json.push_back(']');
  return json;
}

}  // namespace

std::string encodeAddresses(const std::vector<EmailAddress>& addresses) {
  return encodeList(addresses, [](std::string& json, const EmailAddress& address) {
    appendString(json += R"({"address":)", address.address);
    if (address.name) {
      appendString(json += R"(,"name":)", *address.name);
    }
    json.push_back('}');
  });
}

std::string encodeStrings(const std::vector<Text>& strings) {
  return encodeList(strings, [](std::string& json, const Text& string) { appendString(json, string); });
}

bool readAddresses(std::string_view json, std::vector<EmailAddress>& addresses, const MakeText& makeText) {
  ListReader reader(json);
  addresses.reserve(static_cast<std::size_t>(std::count(json.begin(), json.end(), '{')));
  return reader.readArray([&] {
    std::string_view address;
    std::string_view name;
    if (!reader.skip(R"({"address":)") || !reader.readString(address)) {
      return false;
    }
    const bool hasName = reader.skip(R"(,"name":)");
    if ((hasName && !reader.readString(name)) || !reader.skip("}")) {
      return false;
    }
    addresses.push_back({hasName ? std::optional<Text>(makeText(name)) : std::nullopt, makeText(address)});
    return true;
  });
}

bool readStrings(std::string_view json, std::vector<Text>& strings, const MakeText& makeText) {
  ListReader reader(json);
  strings.reserve(static_cast<std::size_t>(std::count(json.begin(), json.end(), '"')) / 2);
  return reader.readArray([&] {
    std::string_view string;
    if (!reader.readString(string)) {
      return false;
    }
    strings.push_back(makeText(string));
    return true;
  });
}

}  // namespace tidewrack
