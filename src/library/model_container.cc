#include "library/model_container.h"

#include <utility>

#include "library/message_store.h"
#include "library/pending_changes.h"

namespace tidewrack {

ModelContext::ModelContext(std::shared_ptr<MessageStore> store)
    : store_(std::move(store)), pending_(std::make_unique<Pending>()) {}
ModelContext::ModelContext(ModelContext&&) noexcept = default;
ModelContext& ModelContext::operator=(ModelContext&&) noexcept = default;
ModelContext::~ModelContext() = default;

bool ModelContext::hasPendingChanges() const {
  return !pending_->changes.empty();
}

std::shared_ptr<ModelContainer> ModelContainer::open(const std::filesystem::path& file) {
  return std::make_shared<ModelContainer>(MessageStore::open(file));
}

std::shared_ptr<ModelContainer> ModelContainer::inMemory() {
  return std::make_shared<ModelContainer>(MessageStore::inMemory());
}

}  // namespace tidewrack
