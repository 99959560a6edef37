// Real mail, where there is some: the CMake option TIDEWRACK_CORPUS names the folder. The golden texts in
// tests/data/golden say what comes out of single files of it; each was compared with the mail by a person.
// They are written anew with
//   TIDEWRACK_RECORD_GOLDEN=1 mail_tests --gtest_filter='Corpus.*'
// To add one, make an empty file of the name of the mail and ".txt" there, record it, and read both.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mail/html_text.h"
#include "mail/mbox_importer.h"
#include "mail/message_texts.h"
#include "mail/reference_parser.h"
#include "platform/digest.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

std::string readAll(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<fs::path> filesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  if (fs::exists(folder)) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) {
        files.push_back(entry.path());
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

class Corpus : public testing::Test {
 protected:
  void SetUp() override {
    if (!fs::is_directory(folder_)) {
      GTEST_SKIP() << "There is no folder of real mail; set TIDEWRACK_CORPUS to test with one.";
    }
  }
  const fs::path folder_ = TIDEWRACK_CORPUS;
};

std::string bytesText(const Content& content) {
  return std::to_string(content.size()) + " bytes, sha256 " + sha256Hex(content.bytes());
}

std::string goldenText(const MessageList& messages) {
  std::ostringstream out;
  const auto line = [&out](const char* name, const std::string& value) {
    out << name << ": " << value << '\n';
  };
  const auto text = [](const std::optional<Text>& value) {
    return value ? "[" + value->string() + "]" : "absent";
  };
  const auto body = [](const std::optional<Content>& value) { return value ? bytesText(*value) : "absent"; };
  const auto texts = [](const std::vector<Text>& values) {
    std::string joined;
    for (const Text& value : values) {
      joined += "[" + value.string() + "]";
    }
    return joined;
  };
  const auto address = [&text](const EmailAddress& value) {
    return text(value.name) + " " + text(value.address);
  };
  int number = 0;
  for (const auto& original : messages) {
    const EmailMessage message = withoutRandomTexts(*original);
    ++number;
    out << (number > 1 ? "\n" : "") << "message " << number << '\n';
    line("id", text(message.id));
    line("subject", text(message.subject));
    line("from", address(message.from));
    for (const EmailAddress& to : message.to) {
      line("to", address(to));
    }
    for (const EmailAddress& cc : message.cc) {
      line("cc", address(cc));
    }
    line("date", message.date ? formatISO8601(*message.date) : "absent");
    line("snippet", text(message.snippet));
    line("plain body", body(message.plainBody));
    line("HTML body", body(message.htmlBody));
    for (const EmailAttachment& attachment : message.attachments) {
      line("attachment", text(attachment.fileName) + " " + text(attachment.mimeType) + " id " +
                             text(attachment.contentID) + (attachment.isInline ? ", inline, " : ", ") +
                             bytesText(attachment.data));
    }
    line("labels", texts(message.labels));
    line("conversation", text(message.conversationID));
    line("in reply to", text(message.inReplyTo));
    line("references", texts(message.references));
  }
  return out.str();
}

TEST_F(Corpus, EveryFileParsesAsTheReferenceParsesIt) {
  const std::vector<fs::path> files = filesIn(folder_);
  ASSERT_FALSE(files.empty());
  for (const fs::path& file : files) {
    const MessageList messages = MBOXImporter::parseFile(file, "library", "name");
    const auto expected = reference::parseArchive(readAll(file), "library", "name");
    ASSERT_EQ(messages.size(), expected.size()) << file;
    for (std::size_t i = 0; i < messages.size(); ++i) {
      ASSERT_TRUE(withoutRandomTexts(*messages[i]) == withoutRandomTexts(expected[i]))
          << file << ", message " << i + 1;
    }
  }
}

TEST_F(Corpus, EveryFileGivesTextAsHTML) {
  for (const fs::path& file : filesIn(folder_)) {
    if (file.extension() == ".html") {
      EXPECT_FALSE(HTMLTextExtractor::extractText(readAll(file)).empty()) << file;
    }
  }
}

TEST_F(Corpus, TheGoldenTextsAreWhatComesOut) {
  const fs::path golden = fs::path(TIDEWRACK_TEST_DATA) / "golden";
  const bool isRecording = std::getenv("TIDEWRACK_RECORD_GOLDEN") != nullptr;
  const std::vector<fs::path> texts = filesIn(golden);
  EXPECT_GE(texts.size(), 60U);
  for (const fs::path& file : texts) {
    const fs::path mail = folder_ / fs::relative(file, golden).replace_extension();
    ASSERT_TRUE(fs::exists(mail)) << mail;
    const std::string actual = goldenText(MBOXImporter::parseFile(mail, "library", "name"));
    if (isRecording) {
      std::ofstream(file, std::ios::binary) << actual;
    } else {
      EXPECT_EQ(actual, readAll(file)) << file;
    }
  }
}

}  // namespace
}  // namespace tidewrack
