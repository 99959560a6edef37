#include <algorithm>
#include <fstream>
#include <string>

#include <time.h>
#include <unistd.h>

#include "archive_generator.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

// The longest that the main loop has not come round, in milliseconds. Time in which the thread was ready to
// run but the machine ran others does not count.
class StallMonitor {
 public:
  StallMonitor() {
    last_ = now();
    lastWaited_ = waitedForProcessor();
    tick_ = Glib::signal_timeout().connect(
        [this] {
          measure();
          return true;
        },
        2, Glib::PRIORITY_HIGH);
  }
  ~StallMonitor() { tick_.disconnect(); }
  StallMonitor(const StallMonitor&) = delete;
  StallMonitor& operator=(const StallMonitor&) = delete;

  [[nodiscard]] double longestMilliseconds() const { return longest_; }

 private:
  static double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }
  // The second number of schedstat: nanoseconds on a run queue.
  static double waitedForProcessor() {
    double ran = 0;
    double waited = 0;
    std::ifstream("/proc/self/task/" + std::to_string(::gettid()) + "/schedstat") >> ran >> waited;
    return waited / 1e6;
  }
  void measure() {
    const double time = now();
    const double waited = waitedForProcessor();
    longest_ = std::max(longest_, (time - last_) - (waited - lastWaited_));
    last_ = time;
    lastWaited_ = waited;
  }

  double last_ = 0;
  double lastWaited_ = 0;
  double longest_ = 0;
  sigc::connection tick_;
};

// Bytes of the archive; a tenth of a gigabyte unless the environment asks for more.
std::uint64_t archiveBytes() {
  const char* wanted = std::getenv("TIDEWRACK_STALL_BYTES");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 100'000'000;
}

class ResponsivenessTest : public WindowTest {
 protected:
  std::filesystem::path generated(bench::ArchiveKind kind, std::uint64_t bytes) {
    const std::filesystem::path file = folder_ / "generated.mbox";
    std::ofstream out(file, std::ios::binary);
    bench::generateArchive({.kind = kind, .bytes = bytes}, [&](std::string_view text) {
      out.write(text.data(), static_cast<long>(text.size()));
    });
    return file;
  }
};

constexpr double allowedMilliseconds = 100;

TEST_F(ResponsivenessTest, TheWindowNeverStallsWhileABigArchiveIsImported) {
  const auto file = generated(bench::ArchiveKind::large, archiveBytes());
  open();
  const StallMonitor monitor;
  import(file);
  EXPECT_GT(screen_->messages().size(), 100U);
  EXPECT_LT(monitor.longestMilliseconds(), allowedMilliseconds);
  RecordProperty("longestStallMilliseconds", std::to_string(monitor.longestMilliseconds()));
  std::printf("longest stall %.1f ms, %zu messages\n", monitor.longestMilliseconds(),
              screen_->messages().size());
}

TEST_F(ResponsivenessTest, TheWindowNeverStallsWhileManySmallMessagesAreImported) {
  const auto file = generated(bench::ArchiveKind::small, archiveBytes());
  open();
  const StallMonitor monitor;
  import(file);
  EXPECT_GT(screen_->messages().size(), 10'000U);
  EXPECT_LT(monitor.longestMilliseconds(), allowedMilliseconds);
  std::printf("longest stall %.1f ms, %zu messages\n", monitor.longestMilliseconds(),
              screen_->messages().size());
}

}  // namespace
}  // namespace tidewrack
