// The window tests run under Xvfb with a session bus, in a world of their own.

#include <clocale>
#include <cstdlib>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const tidewrack::TemporaryFolder world;
  // Before anything asks for a folder or a display.
  for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
    ::setenv(variable, (world / variable).c_str(), 1);
  }
  ::setenv("LC_ALL", "C.UTF-8", 1);
  ::setenv("GDK_BACKEND", "x11", 1);
  ::setenv("GSK_RENDERER", "cairo", 1);
  std::setlocale(LC_ALL, "");
  return RUN_ALL_TESTS();
}
