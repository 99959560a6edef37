// The window tests run under Xvfb with a session bus, in a world of their own.

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/temporary_folder.h"

namespace {

std::string runningTest;  // of which a handler of signals tells

/// Says which test a crash ended: the report is brief and names only what failed.
class CrashReport : public testing::EmptyTestEventListener {
 public:
  CrashReport() {
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGTRAP, SIGTERM}) {
      struct sigaction action = {};
      action.sa_handler = [](int signal) {
        constexpr std::string_view words = "ended while it ran: ";
        [[maybe_unused]] auto written = ::write(STDERR_FILENO, words.data(), words.size());
        written = ::write(STDERR_FILENO, runningTest.data(), runningTest.size());
        ::raise(signal);  // and ends the program, now without a handler
      };
      action.sa_flags = static_cast<int>(SA_RESETHAND);
      ::sigaction(number, &action, nullptr);
    }
  }
  void OnTestStart(const testing::TestInfo& test) override {
    runningTest = std::string(test.test_suite_name()) + "." + test.name() + "\n";
  }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new CrashReport);
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
