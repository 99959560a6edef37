#include "library/stored_content.h"

#include <utility>

namespace tidewrack {
namespace {

class StoredContent final : public ContentSource {
 public:
  StoredContent(std::shared_ptr<MessageStore> store, std::int64_t number, std::uint64_t size)
      : store_(std::move(store)), number_(number), size_(size) {}
  [[nodiscard]] std::string bytes() const override { return store_->readContent(number_, size_); }
  [[nodiscard]] std::uint64_t size() const override { return size_; }

 private:
  std::shared_ptr<MessageStore> store_;
  std::int64_t number_;
  std::uint64_t size_;
};

}  // namespace

Content storedContent(const std::shared_ptr<MessageStore>& store, std::int64_t number, std::uint64_t size) {
  return size == 0 ? Content() : Content(std::make_shared<StoredContent>(store, number, size));
}

}  // namespace tidewrack
