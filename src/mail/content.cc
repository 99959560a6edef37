#include "mail/content.h"

#include <functional>
#include <string_view>

namespace tidewrack {
namespace {

class MemoryContent final : public ContentSource {
 public:
  explicit MemoryContent(std::string bytes) : bytes_(std::move(bytes)) {}
  [[nodiscard]] std::string bytes() const override { return bytes_; }
  void appendTo(std::string& text) const override { text += bytes_; }
  [[nodiscard]] std::uint64_t size() const override { return bytes_.size(); }

 private:
  std::string bytes_;
};

}  // namespace

Content Content::ofBytes(std::string bytes) {
  return bytes.empty() ? Content() : Content(std::make_shared<MemoryContent>(std::move(bytes)));
}

bool operator==(const Content& a, const Content& b) {
  return a.source_ == b.source_ || (a.size() == b.size() && a.bytes() == b.bytes());
}

}  // namespace tidewrack

std::size_t std::hash<tidewrack::Content>::operator()(const tidewrack::Content& content) const {
  return std::hash<std::string>()(content.bytes());
}
