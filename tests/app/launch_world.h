#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tidewrack {

/// The lines that were logged since the last clearing, as "category: text".
std::vector<std::string>& loggedLines();

/// A user's folders as a first launch finds them: empty.
class LaunchWorld : public testing::Test {
 protected:
  LaunchWorld();
};

}  // namespace tidewrack
