// The tests of the start run in a world of their own, with a log that can be read.

#include <cstdlib>
#include <string>

#include <glib.h>
#include <gtest/gtest.h>

#include "app/launch_world.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tidewrack {

std::vector<std::string>& loggedLines() {
  static std::vector<std::string> lines;
  return lines;
}

LaunchWorld::LaunchWorld() {
  std::filesystem::remove_all(settingsFolder());
  std::filesystem::remove_all(applicationSupportFolder());
  loggedLines().clear();
}

}  // namespace tidewrack

namespace {

GLogWriterOutput record(GLogLevelFlags /*level*/, const GLogField* fields, gsize count, gpointer /*data*/) {
  std::string category;
  std::string message;
  for (gsize index = 0; index < count; ++index) {
    const std::string key = fields[index].key;
    if (key == "CATEGORY") {
      category = static_cast<const char*>(fields[index].value);
    } else if (key == "MESSAGE") {
      message = static_cast<const char*>(fields[index].value);
    }
  }
  tidewrack::loggedLines().push_back(category + ": " + message);
  return G_LOG_WRITER_HANDLED;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const tidewrack::TemporaryFolder world;
  for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    ::setenv(variable, (world / variable).c_str(), 1);
  }
  g_log_set_writer_func(record, nullptr, nullptr);
  return RUN_ALL_TESTS();
}
