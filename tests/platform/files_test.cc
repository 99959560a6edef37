#include "platform/files.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/failure.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using ::testing::HasSubstr;

void write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

mode_t modeOf(const std::filesystem::path& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 0777U;
}

std::string failureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const FileFailure& failure) {
    return failure.what();
  }
  return "no failure";
}

/// Lets no file grow beyond some bytes, as a full disk would, while it lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &old_);
    rlimit limit = old_;
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit old_ = {};
  void (*handler_)(int) = nullptr;
};

TEST(Files, FoldersOfTheProgramLieInAFolderOfItsOwn) {
  EXPECT_EQ(applicationSupportFolder().filename(), "Tidewrack");
  EXPECT_EQ(cachesFolder().filename(), "Tidewrack");
  EXPECT_EQ(settingsFolder().filename(), "Tidewrack");
}

TEST(Files, NewFoldersArePrivateWithAllBetween) {
  const TemporaryFolder folder;
  const mode_t umask = ::umask(0);
  createPrivateFolders(folder / "a/b/c");
  ::umask(umask);
  EXPECT_EQ(modeOf(folder / "a"), 0700U);
  EXPECT_EQ(modeOf(folder / "a/b/c"), 0700U);
}

TEST(Files, AnExistingFolderKeepsItsMode) {
  const TemporaryFolder folder;
  ::mkdir((folder / "a").c_str(), 0755);
  ::chmod((folder / "a").c_str(), 0755);
  createPrivateFolders(folder / "a");
  createPrivateFolders(folder / "a/");
  EXPECT_EQ(modeOf(folder / "a"), 0755U);
}

TEST(Files, AFileInTheWayOfAFolderFails) {
  const TemporaryFolder folder;
  write(folder / "a", "");
  EXPECT_THROW(createPrivateFolders(folder / "a"), FileFailure);
  EXPECT_THROW(createPrivateFolders(folder / "a/b"), FileFailure);
}

TEST(Files, AnAtomicWriteReplacesTheContentAndLeavesNothingElse) {
  const TemporaryFolder folder;
  const mode_t umask = ::umask(0);
  writeFileAtomically(folder / "f", "one");
  writeFileAtomically(folder / "f", "two");
  ::umask(umask);
  EXPECT_EQ(readFile(folder / "f"), "two");
  EXPECT_EQ(modeOf(folder / "f"), 0600U);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(Files, AnAtomicWriteThatFailsKeepsTheOldContent) {
  const TemporaryFolder folder;
  writeFileAtomically(folder / "f", "old");
  {
    const FileSizeLimit limit(1000);
    EXPECT_THAT(failureOf([&] { writeFileAtomically(folder / "f", std::string(5000, 'x')); }),
                HasSubstr("“f” could not be written"));
  }
  EXPECT_EQ(readFile(folder / "f"), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(Files, ACopyHoldsTheSameBytesAndIsPrivate) {
  const TemporaryFolder folder;
  std::string bytes(20'000'000, 'x');
  for (std::size_t index = 0; index < bytes.size(); index += 97) {
    bytes[index] = static_cast<char>(index);
  }
  write(folder / "source", bytes);
  ::chmod((folder / "source").c_str(), 0644);
  const mode_t umask = ::umask(0);
  copyFile(folder / "source", folder / "copy");
  ::umask(umask);
  EXPECT_EQ(readFile(folder / "copy"), bytes);
  EXPECT_EQ(modeOf(folder / "copy"), 0600U);
}

TEST(Files, ACopyTellsWhatOfItCanBeRead) {
  const TemporaryFolder folder;
  constexpr std::size_t size = 40'000'000;
  write(folder / "source", std::string(size, 'x'));
  std::vector<std::uint64_t> told;
  copyFile(folder / "source", folder / "copy", [&](std::uint64_t there, std::uint64_t expected) {
    EXPECT_GE(std::filesystem::file_size(folder / "copy"), there);
    EXPECT_GT(there, told.empty() ? 0U : told.back());
    EXPECT_EQ(expected, size);
    told.push_back(there);
  });
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told.back(), size);
  told.clear();
  write(folder / "empty", "");
  copyFile(folder / "empty", folder / "copy of empty",
           [&](auto there, auto /*expected*/) { told.push_back(there); });
  EXPECT_TRUE(told.empty());
}

TEST(Files, AnEmptyFileIsCopied) {
  const TemporaryFolder folder;
  write(folder / "source", "");
  copyFile(folder / "source", folder / "copy");
  EXPECT_EQ(readFile(folder / "copy"), "");
}

TEST(Files, ACopyBetweenFileSystemsWorks) {
  if (::access("/dev/shm", W_OK) != 0) {
    GTEST_SKIP() << "no second file system at /dev/shm";
  }
  std::string name = "/dev/shm/tidewrack-XXXXXX";
  ::close(::mkstemp(name.data()));
  write(name, std::string(3'000'000, 'y'));
  const TemporaryFolder folder;
  copyFile(name, folder / "copy");
  ::unlink(name.c_str());
  EXPECT_EQ(readFile(folder / "copy"), std::string(3'000'000, 'y'));
}

TEST(Files, AVirtualFileWithoutASizeIsCopied) {
  const TemporaryFolder folder;
  copyFile("/proc/version", folder / "copy");
  EXPECT_EQ(readFile(folder / "copy"), readFile("/proc/version"));
}

TEST(Files, ACopyThatRunsOutOfRoomFailsClearlyAndLeavesNothing) {
  const TemporaryFolder folder;
  write(folder / "source", std::string(100'000, 'x'));
  {
    const FileSizeLimit limit(50'000);
    EXPECT_EQ(failureOf([&] { copyFile(folder / "source", folder / "copy"); }),
              "“source” could not be copied: File too large.");
  }
  EXPECT_FALSE(fileExists(folder / "copy"));
}

TEST(Files, ACopyOfWhatIsNotAFileFails) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf([&] { copyFile(folder / "missing", folder / "copy"); }),
            "“missing” could not be copied: No such file or directory.");
  EXPECT_EQ(failureOf([&] { copyFile(folder.path(), folder / "copy"); }),
            "“" + folder.path().filename().string() + "” could not be copied: Is a directory.");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_THAT(failureOf([&] { copyFile(folder / "pipe", folder / "copy"); }), HasSubstr("“pipe”"));
  EXPECT_FALSE(fileExists(folder / "copy"));
}

TEST(Files, ACopyNeverReplacesAFile) {
  const TemporaryFolder folder;
  write(folder / "source", "new");
  write(folder / "copy", "old");
  EXPECT_THROW(copyFile(folder / "source", folder / "copy"), FileFailure);
  EXPECT_EQ(readFile(folder / "copy"), "old");
}

TEST(Files, RemovingTakesFilesAndWholeFolders) {
  const TemporaryFolder folder;
  createPrivateFolders(folder / "a/b");
  write(folder / "a/b/c", "");
  write(folder / "f", "");
  removeItem(folder / "f");
  removeItem(folder / "a");
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_THROW(removeItem(folder / "a"), FileFailure);
}

TEST(Files, ReadingAMissingFileNamesItAndTheReason) {
  const TemporaryFolder folder;
  EXPECT_EQ(failureOf([&] { (void)readFile(folder / "missing"); }),
            "“missing” could not be read: No such file or directory.");
}

TEST(Files, ANameThatIsNoTextIsShownAsText) {
  EXPECT_THAT(displayPath("/a/\xff.mbox"), HasSubstr("\xef\xbf\xbd.mbox"));
}

}  // namespace
}  // namespace tidewrack
