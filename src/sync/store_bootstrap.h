#pragma once

#include <memory>
#include <string>
#include <vector>

#include "library/model_container.h"

namespace tidewrack {

/// Builds the one store container of the process, before the first window: in memory when the process
/// arguments hold "--screenshots" (on disk when that cannot be had), otherwise "default.store" in the
/// application's folder. Main thread. Throws StoreFailure, whose description is fit to be shown before the
/// process ends; StoreInUseFailure when another process has the store open.
std::shared_ptr<ModelContainer> makeSharedModelContainer(const std::vector<std::string>& arguments);

}  // namespace tidewrack
