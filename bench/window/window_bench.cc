// tidewrack-window-bench: prints how long the program takes to stand ready with an empty store, as a ratio to
// an empty window that is started in turns with it. Needs a display and a session bus.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <glib.h>
#include <unistd.h>

#include "measure.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

constexpr int turns = 9;
constexpr double startGoal = 1.5;

// Seconds from the start of a program until it says that it is ready.
double secondsUntilReady(const fs::path& program) {
  const gint64 start = g_get_monotonic_time();
  FILE* output = popen(("exec '" + program.string() + "'").c_str(), "r");
  if (output == nullptr) {
    throw std::runtime_error("cannot start " + program.string());
  }
  long long ready = 0;
  const int read = std::fscanf(output, "ready %lld", &ready);
  if (pclose(output) != 0 || read != 1) {
    throw std::runtime_error(program.string() + " did not get ready");
  }
  return static_cast<double>(ready - start) / 1e6;
}

int run(const fs::path& folder) {
  const fs::path world = fs::temp_directory_path() / ("tidewrack-window-bench-" + std::to_string(getpid()));
  setenv("XDG_DATA_HOME", (world / "data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (world / "config").c_str(), 1);
  setenv("XDG_CACHE_HOME", (world / "cache").c_str(), 1);
  const auto empty = [&] { return secondsUntilReady(folder / "tidewrack-empty-window"); };
  const auto window = [&] { return secondsUntilReady(folder / "tidewrack-start-window"); };
  // Once for the caches: both programs' libraries, and the empty store.
  empty();
  window();
  Table table;
  table.addRatio("start to a ready window, empty store", medianOfTurns(turns, window, empty), startGoal);
  fs::remove_all(world);
  return table.allReached() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace tidewrack::bench

int main(int /*argc*/, char** /*argv*/) {
  try {
    return tidewrack::bench::run(std::filesystem::read_symlink("/proc/self/exe").parent_path());
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tidewrack-window-bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
