#include "mail/known_headers.h"

#include "mail/ascii.h"
#include "mail/encoded_words.h"
#include "mail/header_lines.h"

namespace tidewrack {
namespace {

// In the order of KnownHeader.
constexpr std::array<std::string_view, knownHeaderCount> names = {"subject",
                                                                  "from",
                                                                  "to",
                                                                  "cc",
                                                                  "date",
                                                                  "message-id",
                                                                  "in-reply-to",
                                                                  "references",
                                                                  "x-gmail-labels",
                                                                  "content-type",
                                                                  "content-transfer-encoding",
                                                                  "content-disposition",
                                                                  "content-id"};

// Memory of a folded value that is kept for the next block.
constexpr std::size_t keptCapacity = 65536;

}  // namespace

void KnownHeaders::Value::set(std::string_view text) noexcept {
  line_ = text;
  isPresent_ = true;
  isFolded_ = false;
}

void KnownHeaders::Value::append(std::string_view text) {
  if (!isFolded_) {
    if (joined_.capacity() > keptCapacity) {
      joined_ = std::string();
    }
    joined_ = line_;
    isFolded_ = true;
  }
  joined_ += ' ';
  joined_ += text;
}

std::optional<std::string_view> KnownHeaders::Value::get() const noexcept {
  if (!isPresent_) {
    return std::nullopt;
  }
  return isFolded_ ? std::string_view(joined_) : line_;
}

struct KnownHeaders::Reader {
  std::array<Value, knownHeaderCount>& values;
  Value* current = nullptr;

  void field(std::string_view name, std::string_view value) {
    current = nullptr;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (equalsIgnoringCase(name, names[i])) {
        current = &values[i];
        current->set(value);
        return;
      }
    }
  }
  void continuation(std::string_view line) const {
    if (current != nullptr) {
      current->append(line);
    }
  }
};

KnownHeaders::KnownHeaders(const HeaderMap& headers) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (const auto found = headers.find(names[i]); found != headers.end()) {
      values_[i].set(found->second);
    }
  }
}

std::size_t KnownHeaders::read(std::string_view text) {
  for (Value& value : values_) {
    value.clear();
  }
  Reader reader{values_};
  return walkHeaderLines(text, AtEmptyLine::stop, reader);
}

std::optional<std::string> attachmentFileName(const KnownHeaders& headers) {
  const auto parameter = [&headers](KnownHeader header, std::string_view name) {
    const auto value = headers[header];
    const auto found = value ? headerParameter(name, *value) : std::nullopt;
    return found && !found->empty() ? found : std::nullopt;
  };
  auto name = parameter(KnownHeader::contentDisposition, "filename");
  if (!name) {
    name = parameter(KnownHeader::contentType, "name");
  }
  return name ? std::optional(decodeHeaderText(*name)) : std::nullopt;
}

}  // namespace tidewrack
