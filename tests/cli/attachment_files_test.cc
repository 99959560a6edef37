#include "cli/attachment_files.h"

#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/failure.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

EmailMessage messageWith(const std::vector<std::string>& names) {
  EmailMessage message;
  for (const auto& name : names) {
    EmailAttachment attachment;
    attachment.fileName = name;
    attachment.data = Content::ofBytes("bytes of " + name);
    message.attachments.push_back(attachment);
  }
  return message;
}

std::string contents(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

TEST(SaveAttachmentsTest, writesEachAttachmentAndNumbersDuplicates) {
  const TemporaryFolder folder;
  const auto target = folder.path() / "new" / "folder";
  const auto files =
      saveAttachments(messageWith({"a.txt", "a.txt", "../a.txt", "noextension", "noextension"}), target);
  EXPECT_THAT(files, ::testing::ElementsAre(target / "a.txt", target / "a (2).txt", target / "_a.txt",
                                            target / "noextension", target / "noextension (2)"));
  EXPECT_EQ(contents(target / "a.txt"), "bytes of a.txt");
  EXPECT_EQ(contents(target / "a (2).txt"), "bytes of a.txt");
}

TEST(SaveAttachmentsTest, touchesNoFileThatIsThereAndFollowsNoLink) {
  const TemporaryFolder folder;
  std::ofstream(folder.path() / "outside.txt") << "outside";
  const auto target = folder.path() / "target";
  std::filesystem::create_directory(target);
  std::filesystem::create_symlink(folder.path() / "outside.txt", target / "a.txt");
  std::filesystem::create_symlink(folder.path() / "missing.txt", target / "b.txt");
  const auto files = saveAttachments(messageWith({"a.txt", "b.txt"}), target);
  EXPECT_THAT(files, ::testing::ElementsAre(target / "a (2).txt", target / "b (2).txt"));
  EXPECT_EQ(contents(folder.path() / "outside.txt"), "outside");
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "missing.txt"));
}

TEST(SaveAttachmentsTest, failsWhereTheFolderCannotBeMade) {
  const TemporaryFolder folder;
  std::ofstream(folder.path() / "file") << "not a folder";
  EXPECT_THROW(saveAttachments(messageWith({"a.txt"}), folder.path() / "file"), FileFailure);
}

}  // namespace
}  // namespace tidewrack
