#include "library/stored_content.h"

#include <string>
#include <vector>

namespace tidewrack {
namespace {

// As long as one Content of a block is in use, the block is: it must not be large.
constexpr std::size_t blockSize = 64;

}  // namespace

class StoredContents::Source final : public ContentSource {
 public:
  Source(MessageStore& store, std::int64_t number, std::uint64_t size)
      : store_(store), number_(number), size_(size) {}
  [[nodiscard]] std::string bytes() const override {
    std::string bytes;
    appendTo(bytes);
    return bytes;
  }
  void appendTo(std::string& text) const override { store_.readContent(number_, size_, text); }
  [[nodiscard]] std::uint64_t size() const override { return size_; }

 private:
  MessageStore& store_;  // The block keeps it.
  std::int64_t number_;
  std::uint64_t size_;
};

struct StoredContents::Block {
  explicit Block(std::shared_ptr<MessageStore> keptStore) : store(std::move(keptStore)) {
    sources.reserve(blockSize);  // Contents point at its elements.
  }
  std::shared_ptr<MessageStore> store;
  std::vector<Source> sources;
};

Content StoredContents::content(std::int64_t number, std::uint64_t size) {
  if (size == 0) {
    return {};
  }
  if (!block_ || block_->sources.size() == blockSize) {
    block_ = std::make_shared<Block>(store_);
  }
  const Source& source = block_->sources.emplace_back(*store_, number, size);
  return Content(std::shared_ptr<const ContentSource>(block_, &source));
}

}  // namespace tidewrack
