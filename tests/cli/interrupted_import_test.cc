// An import that is cut off, by a kill at any moment or by a full disk, costs nothing that was there before.

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "archive_generator.h"
#include "cli/world.h"

namespace tidewrack {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr int kills = 20;

// Long enough to be hit in every step, short enough to be imported forty times.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t archiveBytes = 4'000'000;
#else
constexpr std::uint64_t archiveBytes = 30'000'000;
#endif

struct Archive {
  std::string file;
  std::size_t messages = 0;
};

Archive makeArchive(const World& world, const std::string& name, std::uint64_t bytes, std::uint64_t seed) {
  std::string text;
  const auto summary = bench::generateArchive({.bytes = bytes, .seed = seed},
                                              [&](std::string_view message) { text += message; });
  return {world.file(name, text), summary.messages};
}

std::string idOf(const ProgramResult& import) {
  return columns(lines(import.output).at(0)).at(0);
}

/// Checks what must hold after every kill, and removes what the killed run has left.
void checkWorld(const World& world, const std::string& olderID, const std::string& olderMessages,
                std::size_t newMessages) {
  const auto catalog = world.applicationFolder() / "libraries.json";
  std::ifstream stream(catalog);
  ASSERT_TRUE(nlohmann::json::accept(stream)) << "the catalog is no JSON";

  const auto libraries = world.run("libraries");
  ASSERT_EQ(libraries.status, 0) << libraries.errors;
  ASSERT_EQ(world.run("messages", "--digest", "--library", olderID).output, olderMessages);
  std::size_t total = 0;
  for (const auto& line : lines(libraries.output)) {
    const auto library = columns(line);
    const auto count = std::stoul(library[2]);
    total += count;
    if (library[0] != olderID) {
      EXPECT_TRUE(count == 0 || count == newMessages) << count << " messages of " << newMessages;
      EXPECT_EQ(world.run("delete", library[0]).status, 0);
    }
  }
  // No message belongs to a library that the catalog does not know.
  EXPECT_EQ(total, lines(olderMessages).size() + (total > lines(olderMessages).size() ? newMessages : 0));
}

TEST(InterruptedImportTest, aKillAtAnyMomentLeavesEarlierLibrariesAndMessagesWholeAndTheRunCanBeRepeated) {
  const World world;
  const auto olderID = idOf(world.run("import", sampleArchive()));
  const auto olderMessages = world.run("messages", "--digest", "--library", olderID).output;
  ASSERT_THAT(lines(olderMessages), SizeIs(14));
  const auto archive = makeArchive(world, "archive.mbox", archiveBytes, 7);

  // The undisturbed run tells how long a run takes, and that each can be repeated.
  const auto start = steady_clock::now();
  const auto undisturbed = world.run("import", archive.file);
  const auto whole = duration_cast<microseconds>(steady_clock::now() - start);
  ASSERT_EQ(undisturbed.status, 0) << undisturbed.errors;
  ASSERT_EQ(columns(lines(undisturbed.output)[0])[2], std::to_string(archive.messages));
  ASSERT_EQ(world.run("delete", idOf(undisturbed)).status, 0);

  // One moment out of each twentieth of the run; the sequence is the same each time.
  std::uint64_t random = 42;
  int killed = 0;
  for (int i = 0; i < kills; ++i) {
    random = random * 6364136223846793005U + 1442695040888963407U;
    const auto moment = (whole * i + whole * static_cast<int>(random >> 33) / (1 << 30) / 2) / kills;
    SCOPED_TRACE("killed after " + std::to_string(moment.count()) + " of " + std::to_string(whole.count()) +
                 " microseconds");
    killed += world.program().runAndKill({"import", archive.file}, moment) ? 1 : 0;
    checkWorld(world, olderID, olderMessages, archive.messages);
    if (HasFatalFailure()) {
      return;
    }
  }
  EXPECT_GE(killed, kills / 2) << "too few runs were still going when they were to be killed";

  const auto repeated = world.run("import", archive.file);
  ASSERT_EQ(repeated.status, 0) << repeated.errors;
  EXPECT_EQ(columns(lines(repeated.output)[0])[2], std::to_string(archive.messages));
  EXPECT_EQ(world.run("messages", "--digest", "--library", olderID).output, olderMessages);
}

/// Runs a script in name spaces of its own, with a small file system in memory mounted at `$WORLD`.
class FullDisk {
 public:
  explicit FullDisk(const World& world) : world_(world), shell_("/usr/bin/unshare") {
    std::filesystem::create_directory(world.folder() / "disk");
    std::filesystem::create_directory(world.folder() / "out");
  }

  /// Leaves `spare` bytes after the sample archive has been imported, imports `archive`, makes room, and
  /// imports it again. What each command printed is in the folder "out".
  [[nodiscard]] ProgramResult run(const std::string& archive, std::uint64_t spare) const {
    const std::string script = R"(
      mount -t tmpfs -o size=200m tmpfs "$WORLD" || exit 77
      export XDG_DATA_HOME="$WORLD/data" XDG_CONFIG_HOME="$WORLD/config" XDG_CACHE_HOME="$WORLD/cache"
      "$CTL" import "$SAMPLE" >/dev/null || exit 1
      "$CTL" messages --digest >"$OUT/before"
      available=$(df --block-size=1 --output=avail "$WORLD" | tail -n 1)
      head -c $((available - SPARE)) /dev/zero >"$WORLD/filler"
      "$CTL" import "$ARCHIVE" >"$OUT/output" 2>"$OUT/errors"
      echo $? >"$OUT/status"
      "$CTL" libraries >"$OUT/libraries" || exit 2
      "$CTL" messages --digest >"$OUT/after" || exit 3
      rm "$WORLD/filler"
      "$CTL" import "$ARCHIVE" >"$OUT/repeated" || exit 4
    )";
    auto shell = shell_;
    shell.setEnvironment("WORLD", world_.folder() / "disk");
    shell.setEnvironment("OUT", world_.folder() / "out");
    shell.setEnvironment("CTL", std::string(TIDEWRACK_BINARY_DIR) + "/tidewrackctl");
    shell.setEnvironment("SAMPLE", sampleArchive());
    shell.setEnvironment("ARCHIVE", archive);
    shell.setEnvironment("SPARE", std::to_string(spare));
    shell.setEnvironment("LC_ALL", "C.UTF-8");
    return shell.run({"--map-root-user", "--mount", "/bin/sh", "-c", script});
  }

  [[nodiscard]] std::string out(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(world_.folder() / "out" / name).rdbuf();
    return text.str();
  }

 private:
  const World& world_;
  Program shell_;
};

void checkFullDisk(std::uint64_t archiveSize, std::uint64_t spare, std::size_t librariesWhileFull) {
  const World world;
  const auto archive = makeArchive(world, "archive.mbox", archiveSize, 11);
  const FullDisk disk(world);
  const auto result = disk.run(archive.file, spare);
  if (result.status == 77 || result.errors.find("unshare failed") != std::string::npos) {
    GTEST_SKIP() << "no file system can be mounted here: " << result.errors;
  }
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(disk.out("status"), "1\n");
  EXPECT_THAT(disk.out("output"), IsEmpty());
  EXPECT_THAT(lines(disk.out("errors")), SizeIs(1)) << disk.out("errors");
  EXPECT_THAT(lines(disk.out("libraries")), SizeIs(librariesWhileFull));
  EXPECT_THAT(lines(disk.out("before")), SizeIs(14));
  EXPECT_EQ(disk.out("after"), disk.out("before"));
  EXPECT_EQ(columns(lines(disk.out("repeated")).at(0))[2], std::to_string(archive.messages));
}

TEST(InterruptedImportTest, aFullDiskDuringTheCopyLosesNothingOlder) {
  checkFullDisk(20'000'000, 10'000'000, 1);
}

TEST(InterruptedImportTest, aFullDiskDuringTheSaveLosesNothingOlder) {
  // The copy fits, the store does not; the library stays, without messages.
  checkFullDisk(10'000'000, 13'000'000, 2);
}

}  // namespace
}  // namespace tidewrack
