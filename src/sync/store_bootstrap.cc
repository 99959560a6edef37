#include "sync/store_bootstrap.h"

#include <algorithm>

#include "platform/files.h"

namespace tidewrack {

std::shared_ptr<ModelContainer> makeSharedModelContainer(const std::vector<std::string>& arguments) {
  if (std::find(arguments.begin(), arguments.end(), "--screenshots") != arguments.end()) {
    try {
      return ModelContainer::inMemory();
    } catch (const StoreFailure&) {
      // Pictures can be taken over the store on disk as well.
    }
  }
  return ModelContainer::open(applicationSupportFolder() / "default.store");
}

}  // namespace tidewrack
