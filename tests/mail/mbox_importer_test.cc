#include "mail/mbox_importer.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mail/archive.h"
#include "mail/chunked_reader.h"
#include "platform/failure.h"
#include "support/temporary_folder.h"
#include "test_sizes.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string messageA = "Subject: A\nMessage-ID: <a@x>\n\nbody of A\n";
const std::string messageB = "Subject: B\nMessage-ID: <b@x>\n\nbody of B\n";
const std::string separator = "From someone@example.org Mon May  4 10:00:00 2026\n";

MessageList parse(const std::string& bytes) {
  return MBOXImporter::parseBytes(bytes, "library", "Name");
}

std::vector<std::string> subjects(const MessageList& messages) {
  std::vector<std::string> texts;
  for (const auto& message : messages) {
    texts.push_back(message->subject.string());
  }
  return texts;
}

std::string body(const EmailMessage& message) {
  return message.plainBody ? message.plainBody->bytes() : "absent";
}

class MBOXImporterFiles : public testing::Test {
 protected:
  std::filesystem::path write(const std::string& name, const std::string& bytes) {
    const auto path = folder_.path() / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  TemporaryFolder folder_;
};

TEST(MBOXImporter, MessagesSeparatedByAFromLineGiveTwoMessagesAndTheFromLinesAppearInNeither) {
  const MessageList messages = parse(separator + messageA + "\n" + separator + messageB);
  ASSERT_THAT(subjects(messages), ElementsAre("A", "B"));
  EXPECT_EQ(body(*messages[0]), "body of A");
  EXPECT_EQ(body(*messages[1]), "body of B");
}

TEST(MBOXImporter, ABodyLineThatBeginsWithTheWordFromAndABlankSplitsTheMessageAtThatLine) {
  const MessageList messages = parse(separator + messageA + "From here on it is another\nthe tail\n");
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(body(*messages[0]), "body of A");
  EXPECT_EQ(messages[1]->subject, "(No Subject)");
  EXPECT_EQ(messages[1]->from.address, "unknown@unknown");
}

TEST(MBOXImporter, ABodyLineThatBeginsWithAGreaterThanSignBeforeThatWordStaysUnchanged) {
  const MessageList messages = parse(separator + messageA + ">From here\n>>From there");
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(body(*messages[0]), "body of A\n>From here\n>>From there");
}

TEST(MBOXImporter, TheSameWordInLowerCaseSplitsNothing) {
  EXPECT_EQ(parse(separator + messageA + "from here\nFROM there\nFrom\nFrom:x\n From x\n").size(), 1U);
}

TEST(MBOXImporter, AFileHoldingOnlyBlankLinesGivesNoMessages) {
  EXPECT_THAT(parse(""), IsEmpty());
  EXPECT_THAT(parse("\n\n \r\n\t\n\u00A0"), IsEmpty());
  EXPECT_THAT(parse(separator), IsEmpty());
  EXPECT_THAT(parse(separator + "\n\n" + separator + separator), IsEmpty());
}

TEST(MBOXImporter, TextBeforeTheFirstFromLineGivesAMessageOfItsOwnAheadOfTheOthers) {
  EXPECT_THAT(subjects(parse("Subject: first\n" + separator + messageA)), ElementsAre("first", "A"));
}

TEST(MBOXImporter, AFileWithoutAnyFromLineIsOneSingleMessage) {
  EXPECT_THAT(subjects(parse(messageA)), ElementsAre("A"));
}

TEST(MBOXImporter, WithCRLFLineEndsTheResultsEqualThoseOfLFLineEnds) {
  const std::string bytes = separator + messageA + "\nline\n" + separator + messageB;
  for (const std::string lineEnd : {"\r\n", "\r"}) {
    std::string changed;
    for (const char character : bytes) {
      changed += character == '\n' ? lineEnd : std::string(1, character);
    }
    const MessageList expected = parse(bytes);
    const MessageList actual = parse(changed);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
      EXPECT_EQ(*actual[i], *expected[i]);
    }
  }
}

TEST(MBOXImporter, OtherLineSeparatorsEndNoLine) {
  EXPECT_EQ(parse(separator + messageA + "x\u2028From a\u2029From b\u0085From c\fFrom d\vFrom e").size(), 1U);
}

TEST(MBOXImporter, InvalidUTF8IsReplacedAndNothingElseIsLost) {
  const MessageList messages =
      parse(separator + "Subject: caf\xE9 \xC3\xA9\nX: \xE2\x82\nMessage-ID: 1\n\nbody \xFF\xFE.\n" +
            separator + messageB);
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0]->subject, "caf\uFFFD \u00E9");
  EXPECT_EQ(body(*messages[0]), "body \uFFFD\uFFFD.");
  EXPECT_EQ(messages[0]->id, "1");
}

TEST(MBOXImporter, SlicesOfATextThatHadToBeRepairedAreTheRightOnes) {
  const MessageList messages =
      parse(separator +
            "X: \xE9\xE9\xE9\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n\xFF\r\n--b\r\n"
            "Content-Disposition: attachment; filename=f\r\n\r\none\xFF\r\ntwo\r\n--b\r\n"
            "Content-Type: image/png; name=g\r\nContent-Transfer-Encoding: base64\r\n\r\nQUJD\r\n"
            "--b\r\nX: y\r\n\r\nthe\xE9text\r\n--b--\r\n");
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(body(*messages[0]), "the\uFFFDtext");
  ASSERT_EQ(messages[0]->attachments.size(), 2U);
  EXPECT_EQ(messages[0]->attachments[0].data.bytes(), "one\uFFFD\ntwo");
  EXPECT_EQ(messages[0]->attachments[1].data.bytes(), "ABC");
}

TEST_F(MBOXImporterFiles, AListOfTwoFilesOneOfThemUnreadableReturnsTheMessagesOfTheOtherAndPrintsOneLogLine) {
  const auto good = write("good.mbox", separator + messageA);
  const auto missing = folder_.path() / "missing.mbox";
  testing::internal::CaptureStdout();
  const MessageList messages = MBOXImporter::importFiles({missing, good}, "library", "Name");
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_THAT(subjects(messages), ElementsAre("A"));
  EXPECT_THAT(printed, testing::StartsWith("[MBOXImporter] Failed to parse missing.mbox: "));
  EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1);
}

TEST_F(MBOXImporterFiles,
       TwoMessagesWithTheSameDateKeepTheirFileOrderAndUndatedMessagesComeAfterAllDatedOnes) {
  const auto dated = [](const std::string& subject, const std::string& date) {
    return separator + "Subject: " + subject + "\nDate: " + date + "\n\nx\n";
  };
  const auto first = write("1.mbox", dated("undated", "never") + dated("old", "1 Jan 1950 00:00:00 +0000") +
                                         dated("same 1", "4 May 2026 10:00:00 +0000"));
  const auto second = write("2.mbox", dated("same 2", "4 May 2026 12:00:00 +0200") + dated("undated 2", "") +
                                          dated("new", "5 May 2026 10:00:00 +0000"));
  EXPECT_THAT(subjects(MBOXImporter::importFiles({first, second}, "library", "Name")),
              ElementsAre("new", "same 1", "same 2", "old", "undated", "undated 2"));
}

TEST_F(MBOXImporterFiles, AnEmptyListOfFilesReturnsAnEmptyList) {
  EXPECT_THAT(MBOXImporter::importFiles({}, "library", "Name"), IsEmpty());
}

TEST_F(MBOXImporterFiles, AFileThatCannotBeReadThrowsAFailureThatNamesIt) {
  for (const auto& path : {folder_.path() / "missing.mbox", folder_.path()}) {
    try {
      MBOXImporter::parseFile(path, "library", "Name");
      FAIL() << "no failure for " << path;
    } catch (const FileFailure& failure) {
      EXPECT_THAT(failure.what(), HasSubstr(path.filename().string()));
    }
  }
}

TEST_F(MBOXImporterFiles, AnEmptyFileHasNoMessages) {
  EXPECT_THAT(MBOXImporter::parseFile(write("empty.mbox", ""), "library", "Name"), IsEmpty());
}

TEST_F(MBOXImporterFiles, BodiesAreReadableAfterTheFileIsRemoved) {
  const auto path = write("a.mbox", separator + messageA);
  const MessageList messages = MBOXImporter::parseFile(path, "library", "Name");
  std::filesystem::remove(path);
  EXPECT_EQ(body(*messages.at(0)), "body of A");
}

TEST_F(MBOXImporterFiles, AFileThatIsTruncatedWhileItIsReadDoesNotEndTheProcess) {
  const auto path = write("a.mbox", separator + messageA + std::string(1'000'000, 'x'));
  const MessageList messages = MBOXImporter::parseFile(path, "library", "Name");
  std::filesystem::resize_file(path, 10);
  EXPECT_EQ(body(*messages.at(0)).size(), std::string("body of A\n").size() + 1'000'000);
}

TEST_F(MBOXImporterFiles, ABusErrorElsewhereStillEndsTheProcess) {
  const auto path = write("a.mbox", messageA);
  const MessageList messages = MBOXImporter::parseFile(path, "library", "Name");
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(raise(SIGBUS), "");
}

TEST_F(MBOXImporterFiles, WhatTheVisitorThrowsEndsTheReading) {
  std::string bytes;
  for (int i = 0; i < 50'000; ++i) {
    bytes += separator + "Subject: " + std::to_string(i) + "\n\n" + std::string(100, 'x') + "\n";
  }
  const auto path = write("a.mbox", bytes);
  int count = 0;
  EXPECT_THROW(MBOXImporter::forEachMessage(path, "library", "Name",
                                            [&count](const auto&) {
                                              if (++count == 10) {
                                                throw std::runtime_error("enough");
                                              }
                                            }),
               std::runtime_error);
  EXPECT_EQ(count, 10);
}

TEST_F(MBOXImporterFiles, MessagesComeInTheirOrderOnTheCallingThread) {
  std::string bytes;
  for (int i = 0; i < 50'000; ++i) {
    bytes += separator + "Subject: " + std::to_string(i) + "\n\n" + std::string(i % 200, 'x') + "\n";
  }
  const auto path = write("a.mbox", bytes);
  const auto thread = std::this_thread::get_id();
  int count = 0;
  MBOXImporter::forEachMessage(path, "library", "Name",
                               [&](const std::shared_ptr<const EmailMessage>& message) {
                                 ASSERT_EQ(message->subject, std::to_string(count));
                                 ASSERT_EQ(std::this_thread::get_id(), thread);
                                 ++count;
                               });
  EXPECT_EQ(count, 50'000);
}

TEST(HostileArchive, OneLineWithoutEndTakesLinearTime) {
  for (const std::string head : {"", "From ", "Subject: x\n\n", "From x\nSubject: y\n\n"}) {
    const MessageList messages = parse(head + std::string(10 * hostileSize, '-'));
    EXPECT_EQ(messages.size(), head == "From " ? 0U : 1U);
  }
}

TEST(HostileArchive, SeparatorsWithoutEndTakeLinearTime) {
  for (const std::string lineEnd : {"\n", "\r", "\r\n"}) {
    std::string bytes;
    while (bytes.size() < hostileSize / 4) {
      bytes += "From " + lineEnd + "x" + lineEnd;
    }
    EXPECT_GT(parse(bytes).size(), hostileSize / 48);
  }
}

TEST(HostileArchive, AttachmentsWithoutEndInATextToBeRepairedTakeLinearTime) {
  std::string bytes = "Content-Type: multipart/mixed; boundary=b\n\n\xFF";
  while (bytes.size() < hostileSize) {
    bytes += "\n--b\nContent-ID: x\nContent-Type: a\n\nz";
  }
  EXPECT_GT(parse(bytes + "\n--b--").at(0)->attachments.size(), hostileSize / 100);
}

}  // namespace
}  // namespace tidewrack
