#include "platform/atomic_file.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/failure.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

long entries(const TemporaryFolder& folder) {
  return std::distance(fs::directory_iterator(folder.path()), {});
}

mode_t modeOf(const fs::path& file) {
  struct stat status = {};
  return ::stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

void write(const fs::path& file, const std::string& text) {
  std::ofstream(file) << text;
}

// No file may grow beyond a size: writing fails as it does on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
};

TEST(AtomicFile, HoldsEverythingOnceItIsCommittedAndNothingElseIsLeft) {
  const TemporaryFolder folder;
  const mode_t umask = ::umask(0);
  {
    AtomicFile file(folder / "f");
    file.write("one ");
    file.write(std::string(3'000'000, 'x'));
    file.write("");
    file.write(" two");
    file.commit();
  }
  ::umask(umask);
  EXPECT_EQ(readFile(folder / "f"), "one " + std::string(3'000'000, 'x') + " two");
  EXPECT_EQ(modeOf(folder / "f"), 0600U);
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, TheOldFileStandsUntilTheNewOneIsCommitted) {
  const TemporaryFolder folder;
  write(folder / "f", "old");
  AtomicFile file(folder / "f");
  file.write(std::string(1'000'000, 'x'));
  EXPECT_EQ(readFile(folder / "f"), "old");
  file.commit();
  EXPECT_EQ(readFile(folder / "f").size(), 1'000'000U);
}

TEST(AtomicFile, OneThatIsNotCommittedLeavesNothing) {
  const TemporaryFolder folder;
  write(folder / "f", "old");
  {
    AtomicFile file(folder / "f");
    file.write(std::string(1'000'000, 'x'));
    AtomicFile other(folder / "g");
    other.write("some");
  }
  EXPECT_EQ(readFile(folder / "f"), "old");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, AFullDiskLeavesNoHalfFileAndKeepsAnExistingOne) {
  const TemporaryFolder folder;
  write(folder / "f", "old");
  for (const char* name : {"f", "new"}) {
    const FileSizeLimit limit(1'000'000);
    AtomicFile file(folder / name);
    try {
      file.write(std::string(2'000'000, 'x'));
      file.commit();
      FAIL();
    } catch (const FileFailure& failure) {
      EXPECT_THAT(failure.what(), HasSubstr("“" + std::string(name) + "” could not be written"));
    }
  }
  EXPECT_EQ(readFile(folder / "f"), "old");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, AKilledProcessLeavesNothing) {
  const TemporaryFolder folder;
  write(folder / "f", "old");
  const pid_t child = ::fork();
  if (child == 0) {
    AtomicFile file(folder / "f");
    file.write(std::string(1'000'000, 'x'));
    ::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(readFile(folder / "f"), "old");
  EXPECT_EQ(entries(folder), 1);
}

TEST(AtomicFile, TheNewFileHasThePermissionsOfTheOldOne) {
  const TemporaryFolder folder;
  write(folder / "f", "old");
  fs::permissions(folder / "f", fs::perms(0640));
  AtomicFile file(folder / "f");
  file.write("new");
  file.commit();
  EXPECT_EQ(modeOf(folder / "f"), 0640U);
}

TEST(AtomicFile, ALinkStaysAndItsFileIsReplaced) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "there");
  write(folder / "there/f", "old");
  fs::create_symlink("there/f", folder / "link");
  AtomicFile file(folder / "link");
  file.write("new");
  file.commit();
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(readFile(folder / "there/f"), "new");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder / "there"), {}), 1);
}

TEST(AtomicFile, APipeIsWrittenToAsItIs) {
  const TemporaryFolder folder;
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { got = readFile(pipe); });
  {
    AtomicFile file(pipe);
    file.write("through the pipe");
    file.commit();
  }
  reader.join();
  EXPECT_EQ(got, "through the pipe");
  EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(AtomicFile, AFolderOrAMissingFolderFailsAtOnce) {
  const TemporaryFolder folder;
  EXPECT_THROW(AtomicFile(folder.path()), FileFailure);
  EXPECT_THROW(AtomicFile(folder / "missing/f"), FileFailure);
  EXPECT_EQ(entries(folder), 0);
}

TEST(AtomicFile, ANameOfTheGreatestLengthIsTaken) {
  const TemporaryFolder folder;
  const fs::path path = folder / std::string(255, 'n');
  AtomicFile file(path);
  file.write("x");
  file.commit();
  EXPECT_EQ(readFile(path), "x");
}

}  // namespace
}  // namespace tidewrack
