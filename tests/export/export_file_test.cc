#include "export/export_file.h"

#include <csignal>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using Format = ExportUtility::ExportFormat;

// A body whose row is gone.
class MissingContent final : public ContentSource {
 public:
  [[nodiscard]] std::string bytes() const override { throw StoreFailure("The row is gone."); }
  [[nodiscard]] std::uint64_t size() const override { return 10; }
};

MessageList messages(std::size_t count, const Content& body) {
  MessageList list;
  for (std::size_t number = 0; number < count; ++number) {
    EmailMessage message;
    message.id = "m" + std::to_string(number);
    message.plainBody = body;
    list.push_back(std::make_shared<EmailMessage>(std::move(message)));
  }
  return list;
}

long entries(const TemporaryFolder& folder) {
  return std::distance(std::filesystem::directory_iterator(folder.path()), {});
}

TEST(ExportFile, HoldsWhatTheExporterGives) {
  const TemporaryFolder folder;
  const auto list = messages(1000, Content::ofBytes(std::string(1000, 'x')));
  for (const auto format : ExportUtility::allFormats) {
    std::string expected;
    ExportUtility::exportMessages(
        list, format, [&](std::string_view bytes) { expected += bytes; }, Date());
    exportToFile(list, format, folder / "export", Date());
    EXPECT_TRUE(readFile(folder / "export") == expected) << ExportUtility::title(format);
  }
  EXPECT_EQ(entries(folder), 1);
}

TEST(ExportFile, LargeMessagesAmongSmallOnesStandInTheirOrder) {
  const TemporaryFolder folder;
  auto list = messages(300, Content::ofBytes("small"));
  for (const std::size_t place : {0UL, 63UL, 64UL, 130UL, 131UL, 299UL}) {
    EmailMessage large = *list[place];
    large.plainBody = Content::ofBytes(std::string(3'000'000, 'x') + std::to_string(place));
    list[place] = std::make_shared<EmailMessage>(large);
  }
  exportToFile(list, Format::json, folder / "export", Date());
  const auto json = nlohmann::json::parse(readFile(folder / "export"));
  ASSERT_EQ(json.size(), list.size());
  for (std::size_t place = 0; place < list.size(); ++place) {
    EXPECT_EQ(json[place]["id"], "m" + std::to_string(place));
    EXPECT_TRUE(json[place]["plainBody"] == list[place]->plainBody->bytes()) << place;
  }
}

TEST(ExportFile, AnEmptyListTouchesNoFile) {
  const TemporaryFolder folder;
  EXPECT_THROW(exportToFile({}, Format::json, folder / "export", Date()), ExportUtility::ExportError);
  EXPECT_EQ(entries(folder), 0);
}

TEST(ExportFile, AFullDiskLeavesNoHalfFileAndKeepsAnExistingOne) {
  const TemporaryFolder folder;
  std::ofstream(folder / "export") << "old";
  const auto list = messages(1000, Content::ofBytes(std::string(10'000, 'x')));
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{1'000'000, before.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_THROW(exportToFile(list, Format::txt, folder / "export", Date()), FileFailure);
  EXPECT_THROW(exportToFile(list, Format::txt, folder / "new", Date()), FileFailure);
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(readFile(folder / "export"), "old");
  EXPECT_EQ(entries(folder), 1);
}

TEST(ExportFile, ABodyThatCannotBeReadLeavesNothing) {
  const TemporaryFolder folder;
  auto list = messages(100, Content::ofBytes(std::string(100'000, 'x')));
  EmailMessage broken = *list[99];
  broken.plainBody = Content(std::make_shared<MissingContent>());
  list[99] = std::make_shared<EmailMessage>(broken);
  EXPECT_THROW(exportToFile(list, Format::mbox, folder / "export", Date()), StoreFailure);
  EXPECT_EQ(entries(folder), 0);
}

TEST(ExportFile, AnExportThatIsGivenUpLeavesNothing) {
  const TemporaryFolder folder;
  struct GivenUp {};
  const auto giveUp = [](std::size_t done) {
    if (done >= 50) {
      throw GivenUp();
    }
  };
  EXPECT_THROW(
      exportToFile(messages(1000, Content::ofBytes("x")), Format::csv, folder / "export", Date(), giveUp),
      GivenUp);
  EXPECT_EQ(entries(folder), 0);
}

TEST(ExportFile, TheSizeEstimateCountsBodiesAndAttachmentsDecoded) {
  EXPECT_EQ(exportSizeEstimate({}), 0U);
  EmailMessage message;
  message.subject = "not counted";
  message.plainBody = Content::ofBytes("äöü");
  message.htmlBody = Content::ofBytes("<p>");
  EmailAttachment attachment;
  attachment.data = Content::ofBytes(std::string(100, '\0'));
  message.attachments = {attachment, attachment};
  EXPECT_EQ(exportSizeEstimate({std::make_shared<EmailMessage>(message)}), 6U + 3U + 200U);
}

}  // namespace
}  // namespace tidewrack
