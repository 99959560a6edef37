#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/world.h"
#include "library/model_container.h"

namespace tidewrack {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::size_t sampleMessages = 14;

std::vector<json> objects(const std::string& text) {
  std::vector<json> result;
  for (const auto& line : lines(text)) {
    result.push_back(json::parse(line));
  }
  return result;
}

TEST(ProgramTest, helpAndVersionGoToStandardOutput) {
  const World world;
  const auto help = world.run("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, HasSubstr("tidewrackctl COMMAND"));
  EXPECT_THAT(help.errors, IsEmpty());
  const auto version = world.run("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "tidewrackctl " TIDEWRACK_VERSION "\n");
}

TEST(ProgramTest, wrongUsageIsStatusTwoWithTheUsageOnStandardError) {
  const World world;
  const auto result = world.run("shwo", "id");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("Unknown command: shwo"));
  EXPECT_THAT(result.errors, HasSubstr("tidewrackctl COMMAND"));
}

TEST(ParseTest, printsOneObjectPerLineInFileOrder) {
  const World world;
  const auto result = world.run("parse", sampleArchive());
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, IsEmpty());
  const auto messages = objects(result.output);
  ASSERT_THAT(messages, SizeIs(sampleMessages));
  EXPECT_EQ(messages[0]["id"], "welcome.sample@example.org");
  EXPECT_EQ(messages[0]["date"], "2026-01-05T08:00:00Z");
  EXPECT_EQ(messages[6]["date"], "2026-01-09T15:00:05Z");
  EXPECT_EQ(messages[7]["subject"], "Informe del año y próxima temporada");
  EXPECT_EQ(messages[13]["id"], "draft.berth@example.org");
  EXPECT_FALSE(messages[11].contains("date"));
  // Compact, with sorted keys.
  EXPECT_EQ(lines(result.output)[0], messages[0].dump());
}

TEST(ParseTest, storesNothing) {
  const World world;
  EXPECT_EQ(world.run("parse", sampleArchive()).status, 0);
  EXPECT_FALSE(std::filesystem::exists(world.folder() / "data"));
  EXPECT_FALSE(std::filesystem::exists(world.folder() / "config"));
}

TEST(ParseTest, writesAttachmentBytesOrTheirDigest) {
  const World world;
  const auto whole = objects(world.run("parse", sampleArchive()).output).at(7)["attachments"];
  ASSERT_THAT(whole, SizeIs(2));
  EXPECT_EQ(whole[1]["fileName"], "numbers.csv");
  EXPECT_EQ(whole[1]["data"],
            "bW9udGgsdmlzaXRvcnMsYm9hdHMKSmFudWFyeSw0MTAsMTIKSnVuZSwyMTAyLDU4CkF1Z3VzdCwzMzc3LDcx");
  const auto digest = objects(world.run("parse", "--digest", sampleArchive()).output).at(7)["attachments"];
  EXPECT_FALSE(digest[1].contains("data"));
  EXPECT_EQ(digest[1]["size"], 63);
  EXPECT_EQ(digest[1]["sha256"], "d6565162c71bc65954e8ba78166c2d852ef495d331b9e899e9ad13f60ecd2795");
}

TEST(ParseTest, goesOnWithTheOtherFilesAfterOneThatCannotBeRead) {
  const World world;
  const auto missing = (world.folder() / "missing.mbox").string();
  const auto result = world.run("parse", missing, sampleArchive(), world.folder().path().string());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(lines(result.output), SizeIs(sampleMessages));
  EXPECT_THAT(result.errors, HasSubstr("missing.mbox"));
  EXPECT_THAT(lines(result.errors), SizeIs(2));
}

TEST(ParseTest, anEmptyFileHasNoMessagesAndIsNoFailure) {
  const World world;
  const auto result = world.run("parse", world.file("empty.mbox", "\n \n"));
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, IsEmpty());
}

TEST(ParseTest, aReaderThatGoesAwayEndsTheProgramQuietly) {
  const World world;
  const auto result = world.program().runWithClosedOutput({"parse", sampleArchive()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST(ImportTest, storesAnArchiveThatLaterRunsFindAgain) {
  const World world;
  const auto imported = world.run("import", sampleArchive());
  EXPECT_EQ(imported.status, 0) << imported.errors;
  EXPECT_THAT(imported.errors, IsEmpty());
  const auto libraries = world.run("libraries");
  EXPECT_EQ(libraries.status, 0);
  EXPECT_EQ(libraries.output, imported.output);
  ASSERT_THAT(lines(libraries.output), SizeIs(1));
  const auto library = columns(lines(libraries.output)[0]);
  ASSERT_THAT(library, SizeIs(5));
  EXPECT_EQ(library[1], "sample");
  EXPECT_EQ(library[2], std::to_string(sampleMessages));
  EXPECT_TRUE(std::filesystem::exists(world.applicationFolder() / "Libraries" / library[4]));
}

TEST(ImportTest, anUnreadableFileFailsBeforeAnythingIsStored) {
  const World world;
  const auto result = world.run("import", sampleArchive(), (world.folder() / "missing.mbox").string());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("missing.mbox"));
  EXPECT_THAT(world.run("libraries").output, IsEmpty());
}

TEST(ImportTest, importingTheSameFileTwiceMovesItsMessagesToTheNewLibrary) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto second = world.run("import", sampleArchive());
  ASSERT_EQ(second.status, 0);
  const auto libraries = lines(world.run("libraries").output);
  ASSERT_THAT(libraries, SizeIs(2));
  // The chat without a Message-ID is stored again; every other message has moved.
  EXPECT_EQ(columns(second.output)[2], std::to_string(sampleMessages));
  EXPECT_THAT(lines(world.run("messages").output), SizeIs(sampleMessages + 1));
}

TEST(MessagesTest, comeNewestFirstWithUndatedOnesLast) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto messages = lines(world.run("messages").output);
  ASSERT_THAT(messages, SizeIs(sampleMessages));
  EXPECT_THAT(columns(messages.front()),
              ElementsAre("draft.berth@example.org", "2026-01-18T09:00:00Z",
                          "Nora Hale <nora.hale@example.org>", "Berth for the summer"));
  EXPECT_EQ(columns(messages.back())[1], "");
}

TEST(MessagesTest, whatWasStoredEqualsWhatWasParsed) {
  const World world;
  const auto import = world.run("import", sampleArchive());
  const auto library = columns(import.output);
  const auto byID = [](const std::string& text) {
    std::map<std::string, json> result;
    for (auto& message : objects(text)) {
      if (message.contains("date")) {  // The one without a Message-ID has another id at each parse.
        message.erase("sourceLibraryID");
        message.erase("sourceLibraryName");
        for (auto& attachment : message["attachments"]) {
          attachment.erase("id");
        }
        result[message["id"]] = message;
      }
    }
    return result;
  };
  const auto parsed = byID(world.run("parse", sampleArchive()).output);
  EXPECT_THAT(parsed, SizeIs(sampleMessages - 1));
  EXPECT_EQ(byID(world.run("messages", "--json").output), parsed);
  EXPECT_EQ(byID(world.run("messages", "--json", "--library", library[0]).output), parsed);
}

TEST(MessagesTest, ofOneLibraryOnly) {
  const World world;
  const auto other =
      world.file("other.mbox", "From x\nMessage-ID: <one@example.org>\nSubject: One\n\nText\n");
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto library = columns(world.run("import", other).output)[0];
  EXPECT_THAT(lines(world.run("messages").output), SizeIs(sampleMessages + 1));
  const auto result = world.run("messages", "--library", library);
  ASSERT_THAT(lines(result.output), SizeIs(1));
  EXPECT_EQ(columns(result.output)[0], "one@example.org");
  const auto unknown = world.run("messages", "--library", "unknown");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(unknown.errors, HasSubstr("unknown"));
}

TEST(ShowTest, printsHeadersAndText) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto result = world.run("show", "informe.2025@example.com");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("From: Iñaki Peña <inaki.pena@example.com>\n"));
  EXPECT_THAT(result.output, HasSubstr("Date: 2026-01-12T10:20:00Z\n"));
  EXPECT_THAT(result.output, HasSubstr("Attachment: numbers.csv (text/csv"));
  EXPECT_THAT(result.output, HasSubstr("\n\nHola, Nora:\n"));
}

TEST(ShowTest, printsOneBodyAlone) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto text = world.run("show", "reading.jp@example.com", "--text");
  EXPECT_THAT(text.output, ::testing::StartsWith("ノラさん\n"));
  const auto html = world.run("show", "--html", "sky.0107@example.net");
  EXPECT_THAT(html.output, ::testing::StartsWith("<html>"));
  const auto none = world.run("show", "--html", "reading.jp@example.com");
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(none.output, IsEmpty());
}

TEST(ShowTest, savesAttachments) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto target = (world.folder() / "saved").string();
  const auto result = world.run("show", "informe.2025@example.com", "--attachments", target);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(lines(result.output), ElementsAre(target + "/informe año.pdf", target + "/numbers.csv"));
  EXPECT_EQ(std::filesystem::file_size(target + "/numbers.csv"), 63U);
}

TEST(ShowTest, anUnknownMessageIsAFailure) {
  const World world;
  const auto result = world.run("show", "nobody@example.org");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("nobody@example.org"));
}

TEST(RenameTest, givesALibraryANewName) {
  const World world;
  const auto id = columns(world.run("import", sampleArchive()).output)[0];
  EXPECT_EQ(world.run("rename", id, " Old mail ").status, 0);
  EXPECT_EQ(columns(world.run("libraries").output)[1], "Old mail");
  EXPECT_EQ(objects(world.run("messages", "--digest").output).at(0)["sourceLibraryName"], "Old mail");
  EXPECT_EQ(world.run("rename", id, "Old mail").status, 0);
  EXPECT_EQ(world.run("rename", "unknown", "Name").status, 1);
}

TEST(DeleteTest, removesALibraryWithItsMessagesAndItsFile) {
  const World world;
  const auto other =
      world.file("other.mbox", "From x\nMessage-ID: <one@example.org>\nSubject: One\n\nText\n");
  const auto library = columns(lines(world.run("import", sampleArchive()).output)[0]);
  ASSERT_EQ(world.run("import", other).status, 0);
  EXPECT_EQ(world.run("delete", library[0]).status, 0);
  ASSERT_THAT(lines(world.run("libraries").output), SizeIs(1));
  EXPECT_THAT(lines(world.run("messages").output), SizeIs(1));
  EXPECT_FALSE(std::filesystem::exists(world.applicationFolder() / "Libraries" / library[4]));
  EXPECT_EQ(world.run("delete", library[0]).status, 1);
}

TEST(StoreTest, aStoreInUseIsToldClearly) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto container = ModelContainer::open(world.applicationFolder() / "default.store");
  const auto result = world.run("libraries");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(lines(result.errors), SizeIs(1));
}

TEST(StoreTest, aDamagedCatalogIsToldAndKept) {
  const World world;
  ASSERT_EQ(world.run("import", sampleArchive()).status, 0);
  const auto catalog = world.applicationFolder() / "libraries.json";
  std::ofstream(catalog) << "[{";
  const auto result = world.run("import", sampleArchive());
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(std::filesystem::file_size(catalog), 2U);
}

}  // namespace
}  // namespace tidewrack
