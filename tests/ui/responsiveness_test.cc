#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <time.h>
#include <unistd.h>

#include "archive_generator.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

// For how long this thread has been ready to run while the machine ran others, in milliseconds: the second
// number of schedstat, which are nanoseconds. Nothing where the kernel does not say.
std::optional<double> waitedForProcessor() {
  double ran = 0;
  double waited = 0;
  std::ifstream file("/proc/self/task/" + std::to_string(::gettid()) + "/schedstat");
  if (!(file >> ran >> waited) || ran == 0) {
    return std::nullopt;
  }
  return waited / 1e6;
}

// The longest time between two turns of the main loop, in milliseconds, without what the main thread waited
// for a processor in it: that is the machine's, and says nothing of the program.
class StallMonitor {
 public:
  StallMonitor() {
    last_ = now();
    lastWaited_ = waitedForProcessor().value_or(0);
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
  void measure() {
    const double time = now();
    const double waited = waitedForProcessor().value_or(lastWaited_);
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

constexpr double allowedMilliseconds = 100;

class ResponsivenessTest : public WindowTest {
 protected:
  void SetUp() override {
    if (!waitedForProcessor()) {
      GTEST_SKIP() << "the kernel does not say how long a thread waits for a processor (schedstat)";
    }
  }

  std::filesystem::path generated(bench::ArchiveKind kind, std::uint64_t bytes) {
    const std::filesystem::path file = folder_ / "generated.mbox";
    std::ofstream out(file, std::ios::binary);
    bench::generateArchive({.kind = kind, .bytes = bytes}, [&](std::string_view text) {
      out.write(text.data(), static_cast<long>(text.size()));
    });
    return file;
  }

  // With a page on the screen: the first one of a run starts the engine, which waits for processes of its
  // own.
  void openWithAPage() {
    open();
    import(archive("page.mbox", archivedMessage("Message-ID: <page@example.org>\nContent-Type: text/html\n",
                                                "<p>Page</p>")));
    screen_->dismissImportStatus();
    ASSERT_TRUE(runUntil([this] { return window_->detail().htmlView() != nullptr; }));
    bool isLoaded = false;
    sigc::connection loaded = window_->detail().htmlView()->signalLoaded().connect([&] { isLoaded = true; });
    ASSERT_TRUE(runUntil([&] { return isLoaded; }));
    loaded.disconnect();
  }

  void expectNoStallOfAnImport(const std::filesystem::path& file, std::size_t fewestMessages) {
    openWithAPage();
    const StallMonitor monitor;
    import(file);
    EXPECT_GT(screen_->messages().size(), fewestMessages);
    EXPECT_LT(monitor.longestMilliseconds(), allowedMilliseconds);
    std::printf("longest stall %.1f ms, %zu messages\n", monitor.longestMilliseconds(),
                screen_->messages().size());
  }
};

TEST_F(ResponsivenessTest, TheWindowNeverStallsWhileABigArchiveIsImported) {
  expectNoStallOfAnImport(generated(bench::ArchiveKind::large, archiveBytes()), 100);
}

TEST_F(ResponsivenessTest, TheWindowNeverStallsWhileManySmallMessagesAreImported) {
  expectNoStallOfAnImport(generated(bench::ArchiveKind::small, archiveBytes()), 10'000);
}

// Kept apart from the tests above: what it allows holds on a busy machine too.
class DeletionResponsivenessTest : public WindowTest {
 protected:
  std::filesystem::path tinyMessages(int count) {
    const std::filesystem::path file = folder_ / "tiny.mbox";
    std::ofstream out(file, std::ios::binary);
    for (int number = 0; number < count; ++number) {
      const std::string text = std::to_string(number);
      out << archivedMessage("Message-ID: <t" + text +
                                 "@example.org>\nFrom: Ana <ana@example.org>\nSubject: " + text +
                                 "\nDate: Thu, 1 Jan 2026 10:00:00 +0000\n",
                             "Text " + text);
    }
    return file;
  }
};

TEST_F(DeletionResponsivenessTest, TheWindowAnswersWhileALibraryOfAHundredThousandMessagesIsDeleted) {
  constexpr double allowedWhileDeleting = 500;
  const auto file = tinyMessages(100'000);
  open();
  import(archive("kept.mbox", archivedMessage("Message-ID: <kept@example.org>\nSubject: Kept\n", "x")));
  screen_->dismissImportStatus();
  import(file);
  screen_->dismissImportStatus();
  ASSERT_TRUE(runUntil([this] { return !screen_->isIndexing(); }));
  ASSERT_EQ(screen_->messages().size(), 100'001U);
  screen_->requestDelete(screen_->libraries().front());
  runPending();
  const StallMonitor monitor;
  find<Gtk::Button>("confirmation.confirm")->activate();
  ASSERT_TRUE(runUntil([this] {
    const auto& status = screen_->importStatus();
    return status && status->as<ImportStatus::DeleteSuccess>() != nullptr;
  }));
  EXPECT_EQ(screen_->messages().size(), 1U);
  EXPECT_EQ(window_->list().model()->size(), 1U);
  EXPECT_LT(monitor.longestMilliseconds(), allowedWhileDeleting);
  std::printf("longest stall %.1f ms\n", monitor.longestMilliseconds());
}

}  // namespace
}  // namespace tidewrack
