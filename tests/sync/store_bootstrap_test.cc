#include "sync/store_bootstrap.h"

#include <gtest/gtest.h>

#include "platform/files.h"

namespace tidewrack {
namespace {

TEST(StoreBootstrap, ScreenshotsWorkInMemoryAndLeaveTheStoreFilesAlone) {
  const bool before = fileExists(applicationSupportFolder() / "default.store");
  const auto container = makeSharedModelContainer({"tidewrack", "--screenshots"});
  EXPECT_NE(container, nullptr);
  EXPECT_NE(makeSharedModelContainer({"--screenshots"}), nullptr);  // No lock is in the way.
  EXPECT_EQ(fileExists(applicationSupportFolder() / "default.store"), before);
}

}  // namespace
}  // namespace tidewrack
