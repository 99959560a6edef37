#include "library/copy_and_read.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/failure.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string message(const std::string& subject, const std::string& body = "x") {
  return "From a@b Mon\nSubject: " + subject + "\n\n" + body + "\n";
}

std::vector<std::string> subjects(const MessageList& messages) {
  std::vector<std::string> texts;
  for (const auto& message : messages) {
    texts.push_back(message->subject.string());
  }
  return texts;
}

class CopyAndRead : public testing::Test {
 protected:
  std::filesystem::path archive(const std::string& name, const std::string& bytes) {
    write(folder_ / name, bytes);
    return folder_ / name;
  }
  static void write(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }
  [[nodiscard]] LibraryCatalog catalog() const { return LibraryCatalog(folder_ / "Tidewrack"); }

  TemporaryFolder folder_;
};

TEST_F(CopyAndRead, TheMessagesOfTheCopyComeWithItsLibrary) {
  std::string bytes;
  std::vector<std::string> expected;
  for (int i = 0; i < 1000; ++i) {
    expected.push_back(std::to_string(i));
    bytes += message(expected.back(), std::string(40'000, 'x'));
  }
  auto copied = copyAndRead(catalog(), archive("Work.mbox", bytes));
  ASSERT_THAT(copied.libraries, SizeIs(1));
  const MBOXLibrary& library = copied.libraries[0];
  EXPECT_EQ(catalog().loadLibraries()[0].id, library.id);
  ASSERT_TRUE(copied.early);
  EXPECT_EQ(copied.early->fileSize, bytes.size());
  EXPECT_EQ(subjects(copied.early->messages), expected);
  EXPECT_EQ(copied.early->messages[0]->sourceLibraryID, library.id);
  EXPECT_EQ(copied.early->messages[0]->sourceLibraryName, "Work");
  const auto file = catalog().fileLocation(library);
  std::filesystem::remove(folder_ / "Work.mbox");
  EXPECT_EQ(subjects(messagesOfCopy(file, library, std::move(copied.early))), expected);
}

TEST_F(CopyAndRead, AnEmptyFileGivesALibraryWithoutMessages) {
  auto copied = copyAndRead(catalog(), archive("a.mbox", ""));
  ASSERT_THAT(copied.libraries, SizeIs(1));
  const auto file = catalog().fileLocation(copied.libraries[0]);
  EXPECT_THAT(messagesOfCopy(file, copied.libraries[0], std::move(copied.early)), IsEmpty());
}

TEST_F(CopyAndRead, AVirtualFileWithoutASizeIsReadWhenItsCopyIsWhole) {
  auto copied = copyAndRead(catalog(), "/proc/version");
  const auto file = catalog().fileLocation(copied.libraries.at(0));
  EXPECT_THAT(messagesOfCopy(file, copied.libraries[0], std::move(copied.early)), SizeIs(1));
}

TEST_F(CopyAndRead, AFileThatCannotBeCopiedFailsAsItsCopyDoes) {
  EXPECT_THROW(copyAndRead(catalog(), folder_ / "missing.mbox"), FileFailure);
}

TEST_F(CopyAndRead, ACopyThatFailsHalfwayEndsItsReading) {
  const auto big = archive("big.mbox", message("one") + message("two", std::string(100'000, 'x')));
  rlimit old = {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  rlimit limit = old;
  limit.rlim_cur = 50'000;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THROW(copyAndRead(catalog(), big), FileFailure);
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_THAT(catalog().loadLibraries(), IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(catalog().librariesFolder()));
}

TEST_F(CopyAndRead, WithoutEarlyMessagesTheCopyIsReadAsAWhole) {
  const auto copied = copyAndRead(catalog(), archive("a.mbox", message("one") + message("two")));
  const auto file = catalog().fileLocation(copied.libraries.at(0));
  EXPECT_THAT(subjects(messagesOfCopy(file, copied.libraries[0], std::nullopt)), ElementsAre("one", "two"));
}

TEST_F(CopyAndRead, EarlyMessagesOfAnotherSizeAreThrownAway) {
  auto copied = copyAndRead(catalog(), archive("a.mbox", message("one")));
  const auto file = catalog().fileLocation(copied.libraries.at(0));
  write(file, message("one") + message("two"));
  EXPECT_THAT(subjects(messagesOfCopy(file, copied.libraries[0], std::move(copied.early))),
              ElementsAre("one", "two"));
}

}  // namespace
}  // namespace tidewrack
