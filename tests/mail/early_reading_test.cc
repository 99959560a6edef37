#include "mail/early_reading.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mail/chunked_reader.h"
#include "mail/mbox_importer.h"
#include "mail/message_boundaries.h"
#include "mail/message_texts.h"
#include "mail/random_mail.h"
#include "support/temporary_folder.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string message(const std::string& subject, const std::string& body = "x") {
  return "From a@b Mon\nSubject: " + subject + "\nMessage-ID: <" + subject + "@x>\n\n" + body + "\n";
}

std::vector<std::string> subjects(const MessageList& messages) {
  std::vector<std::string> texts;
  for (const auto& message : messages) {
    texts.push_back(message->subject.string());
  }
  return texts;
}

void expectSame(const MessageList& actual, const MessageList& expected, const std::string& input) {
  ASSERT_EQ(actual.size(), expected.size()) << testing::PrintToString(input);
  for (std::size_t i = 0; i < actual.size(); ++i) {
    const EmailMessage is = withoutRandomTexts(*actual[i]);
    const EmailMessage shouldBe = withoutRandomTexts(*expected[i]);
    ASSERT_TRUE(is == shouldBe) << "--- is\n"
                                << describe(is) << "--- should be\n"
                                << describe(shouldBe) << "--- of\n"
                                << testing::PrintToString(input);
  }
}

/// A file that grows step by step.
class GrowingFile {
 public:
  explicit GrowingFile(std::filesystem::path path) : path_(std::move(path)), out_(path_, std::ios::binary) {}

  void append(std::string_view bytes) { (out_ << bytes).flush(); }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  std::ofstream out_;
};

class EarlyReadingTest : public testing::Test {
 protected:
  // Reads the bytes from a file to which another thread appends them in steps that `nextStep` chooses.
  template <typename NextStep>
  MessageList readWhileItArrives(const std::string& bytes, std::size_t chunkSize, std::size_t helpers,
                                 NextStep nextStep) {
    GrowingFile file(folder_ / ("archive" + std::to_string(files_++)));
    ArrivingBytes arriving(bytes.size());
    auto archive = std::make_shared<const Archive>(MappedFile(file.path(), bytes.size()));
    std::thread writer([&] {
      for (std::size_t there = 0; there < bytes.size();) {
        const std::size_t step = std::min<std::size_t>(nextStep(), bytes.size() - there);
        file.append(std::string_view(bytes).substr(there, step));
        there += step;
        arriving.arrive(there);
        std::this_thread::yield();
      }
      arriving.end();
    });
    MessageList messages;
    ChunkedReader reader(archive, "library", "name");
    reader.setChunks(chunkSize, helpers);
    reader.follow(arriving);
    reader.read([&](std::shared_ptr<const EmailMessage> message) { messages.push_back(std::move(message)); });
    writer.join();
    return messages;
  }

  TemporaryFolder folder_;
  int files_ = 0;
};

TEST_F(EarlyReadingTest, AnArchiveThatArrivesByteByByteEqualsTheWhole) {
  RandomMail mail(11);
  for (int round = 0; round < randomRounds / 400; ++round) {
    const std::string input = mail.mutated(mail.archive()).substr(0, 600);
    const MessageList whole = MBOXImporter::parseBytes(input, "library", "name");
    for (const std::size_t chunkSize : {1U, 7U, 100U}) {
      const auto pieces = readWhileItArrives(input, chunkSize, round % 3, [] { return 1U; });
      ASSERT_NO_FATAL_FAILURE(expectSame(pieces, whole, input));
    }
  }
}

TEST_F(EarlyReadingTest, AnArchiveThatArrivesInStepsOfAnySizeEqualsTheWhole) {
  RandomMail mail(12);
  RandomMail dice(13);
  for (int round = 0; round < randomRounds / 200; ++round) {
    std::string input;
    for (std::size_t part = 0; part < 1 + mail.below(20); ++part) {
      input += mail.mutated(mail.archive());
    }
    const MessageList whole = MBOXImporter::parseBytes(input, "library", "name");
    const std::size_t longest = 1 + mail.below(3000);
    const auto pieces =
        readWhileItArrives(input, 1 + mail.below(2000), round % 3, [&] { return 1 + dice.below(longest); });
    ASSERT_NO_FATAL_FAILURE(expectSame(pieces, whole, input));
  }
}

TEST_F(EarlyReadingTest, EachKindOfLineEndSeparatesWhateverArrivesLast) {
  for (const std::string lineEnd : {"\n", "\r", "\r\n"}) {
    std::string input;
    for (const char character : message("one") + "Fromage\nFrom\n" + message("two") + message("three")) {
      input += character == '\n' ? lineEnd : std::string(1, character);
    }
    const MessageList whole = MBOXImporter::parseBytes(input, "library", "name");
    ASSERT_THAT(subjects(whole), ElementsAre("one", "two", "three"));
    for (std::size_t frontier = 1; frontier < input.size(); ++frontier) {
      std::size_t step = frontier;
      const auto rest = [&] { return std::exchange(step, input.size()); };
      ASSERT_NO_FATAL_FAILURE(expectSame(readWhileItArrives(input, 50, 1, rest), whole, input));
    }
  }
}

TEST_F(EarlyReadingTest, AMessageThatFillsManyChunksIsReadWhenItsEndArrives) {
  std::string long1;
  while (long1.size() < 300'000) {
    long1 += "a line of a long body, From the beginning to its end\n";
  }
  const std::string input = message("first", long1) + message("second", long1 + long1) + message("third");
  const auto pieces = readWhileItArrives(input, 4096, 2, [] { return 10'000U; });
  EXPECT_THAT(subjects(pieces), ElementsAre("first", "second", "third"));
  ASSERT_NO_FATAL_FAILURE(
      expectSame(pieces, MBOXImporter::parseBytes(input, "library", "name"), "a long text"));
}

TEST_F(EarlyReadingTest, ALineWithoutEndThatArrivesInSmallStepsTakesLinearTime) {
  const std::string text(hostileSize / 10, '-');
  for (const std::string head : {"From ", "Subject: x\n\n"}) {
    const std::string bytes = head + text;
    ArrivingBytes arriving(bytes.size());
    std::thread writer([&] {
      for (std::size_t there = 1; there <= bytes.size(); ++there) {
        arriving.arrive(there);
      }
    });
    EXPECT_EQ(findSeparator(bytes, 1, arriving), bytes.size());
    writer.join();
    ArrivingBytes again(bytes.size());
    std::thread secondWriter([&] {
      for (std::size_t there = 1; there <= bytes.size(); ++there) {
        again.arrive(there);
      }
    });
    EXPECT_EQ(behindLine(bytes, head.size(), again), bytes.size());
    secondWriter.join();
  }
}

TEST_F(EarlyReadingTest, AReadingWhoseBytesEndEarlyFailsOnEveryThread) {
  const std::string bytes = message("one", std::string(100'000, 'x')) + message("two");
  for (const std::size_t helpers : {0U, 3U}) {
    ArrivingBytes arriving(bytes.size(), bytes.size() - 1);
    ChunkedReader reader(std::make_shared<Archive>(bytes), "library", "name");
    reader.setChunks(1000, helpers);
    reader.follow(arriving);
    std::thread writer([&] { arriving.end(); });
    EXPECT_THROW(reader.read([](const auto&) {}), ArrivalFailure);
    writer.join();
  }
}

TEST_F(EarlyReadingTest, AFileThatIsWholeGivesItsMessagesNewestFirst) {
  GrowingFile file(folder_ / "a.mbox");
  const std::string old = "From a\nSubject: old\nDate: 1 May 2026 10:00:00 +0000\n\nx\n";
  const std::string recent = "From a\nSubject: new\nDate: 2 May 2026 10:00:00 +0000\n\nbody of new\n";
  EarlyReading reading(file.path(), old.size() + recent.size(), "library", "name");
  file.append(old);
  reading.arrive(old.size());
  file.append(recent);
  reading.arrive(old.size() + recent.size());
  const auto early = reading.finish();
  ASSERT_TRUE(early);
  EXPECT_THAT(subjects(early->messages), ElementsAre("new", "old"));
  EXPECT_EQ(early->messages[0]->plainBody->bytes(), "body of new");
  EXPECT_EQ(early->messages[0]->sourceLibraryID, "library");
  EXPECT_EQ(early->messages[0]->sourceLibraryName, "name");
  EXPECT_TRUE(early->areOf(file.path()));
}

TEST_F(EarlyReadingTest, AnEmptyFileHasNoMessages) {
  const GrowingFile file(folder_ / "a.mbox");
  EarlyReading reading(file.path(), 0, "library", "name");
  const auto early = reading.finish();
  ASSERT_TRUE(early);
  EXPECT_THAT(early->messages, IsEmpty());
  EXPECT_TRUE(early->areOf(file.path()));
}

TEST_F(EarlyReadingTest, AFileThatEndsShorterThanExpectedGivesNothing) {
  GrowingFile file(folder_ / "a.mbox");
  EarlyReading reading(file.path(), 100'000, "library", "name");
  file.append(message("one"));
  reading.arrive(message("one").size());
  EXPECT_FALSE(reading.finish());
  EXPECT_FALSE(reading.finish()) << "asked again";
}

TEST_F(EarlyReadingTest, AFileThatIsShorterThanWasToldGivesNothing) {
  GrowingFile file(folder_ / "a.mbox");
  file.append(message("one"));
  EarlyReading reading(file.path(), 1'000'000, "library", "name");
  reading.arrive(1'000'000);
  EXPECT_FALSE(reading.finish());
}

TEST_F(EarlyReadingTest, AFileOfWhichNothingArrivesGivesNothing) {
  const GrowingFile file(folder_ / "a.mbox");
  EarlyReading reading(file.path(), 100'000, "library", "name");
  EXPECT_FALSE(reading.finish());
}

TEST_F(EarlyReadingTest, TheMessagesOfAFileThatEndsLongerThanExpectedAreNotThoseOfTheFile) {
  GrowingFile file(folder_ / "a.mbox");
  const std::size_t expected = message("one").size();
  EarlyReading reading(file.path(), expected, "library", "name");
  file.append(message("one") + message("two"));
  reading.arrive(expected + message("two").size());
  const auto early = reading.finish();
  EXPECT_FALSE(early && early->areOf(file.path()));
}

TEST_F(EarlyReadingTest, TheMessagesOfAFileThatHasGoneAreNotThoseOfTheFile) {
  EXPECT_FALSE(EarlyMessages().areOf(folder_ / "missing"));
}

TEST_F(EarlyReadingTest, AFileThatCannotBeMappedGivesNothing) {
  EarlyReading reading(folder_ / "missing.mbox", 100, "library", "name");
  reading.arrive(100);
  EXPECT_FALSE(reading.finish());
}

TEST_F(EarlyReadingTest, AReadingThatNobodyFinishesEnds) {
  GrowingFile file(folder_ / "a.mbox");
  file.append(message("one"));
  EarlyReading reading(file.path(), 100'000, "library", "name");
  reading.arrive(10);
}

}  // namespace
}  // namespace tidewrack
