// Exports on the command line, and what is left of one that fails.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "archive_generator.h"
#include "cli/command_line.h"
#include "cli/world.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string read(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

class ExportCommandTest : public testing::Test {
 protected:
  ExportCommandTest() { EXPECT_EQ(world.run("import", sampleArchive()).status, 0); }
  template <typename... Selectors>
  std::string exported(const std::string& format, const Selectors&... selectors) {
    const std::string file = world.folder() / ("out." + format);
    const auto result = world.run("export", "--format", format, "--output", file, selectors...);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, IsEmpty());
    return read(file);
  }

  World world;
};

TEST_F(ExportCommandTest, jsonHoldsTheObjectsThatMessagesPrints) {
  const auto list = nlohmann::json::parse(exported("json"));
  const auto printed = lines(world.run("messages", "--json").output);
  ASSERT_THAT(printed, SizeIs(14));
  ASSERT_EQ(list.size(), printed.size());
  for (std::size_t i = 0; i < printed.size(); ++i) {
    EXPECT_EQ(list[i], nlohmann::json::parse(printed[i]));
  }
}

TEST_F(ExportCommandTest, everyFormatIsWritten) {
  EXPECT_TRUE(exported("txt").starts_with(std::string(71, '=') + "\nMensaje 1 de 14\n"));
  EXPECT_TRUE(exported("html").starts_with("<!DOCTYPE html>\n"));
  EXPECT_TRUE(exported("csv").starts_with("ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n"));
  EXPECT_TRUE(exported("mbox").starts_with("From "));
}

TEST_F(ExportCommandTest, selectorsChooseWhatMessagesChooses) {
  const std::vector<std::vector<std::string>> choices = {
      {"--mailbox", "inbox"}, {"--from", "a"}, {"--search", "the"}, {"--attachments", "with"}};
  for (const auto& choice : choices) {
    const auto expected = lines(world.run("messages", choice[0], choice[1]).output);
    ASSERT_THAT(expected, Not(IsEmpty())) << choice[0];
    const auto list = nlohmann::json::parse(exported("json", choice[0], choice[1]));
    ASSERT_EQ(list.size(), expected.size()) << choice[0];
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(list[i]["id"], columns(expected[i])[0]);
    }
  }
}

TEST_F(ExportCommandTest, anMboxExportIsImportedAgainWithItsLabels) {
  const std::string file = world.folder() / "again.mbox";
  ASSERT_EQ(world.run("export", "--format", "mbox", "--output", file).status, 0);
  const World other;
  ASSERT_EQ(other.run("import", file).status, 0);
  const auto before = lines(world.run("messages", "--json").output);
  const auto after = lines(other.run("messages", "--json").output);
  ASSERT_EQ(after.size(), before.size());
  std::map<std::string, nlohmann::json> byID;
  for (const auto& line : before) {
    const auto message = nlohmann::json::parse(line);
    byID[message["id"]] = message;
  }
  for (const auto& line : after) {
    const auto message = nlohmann::json::parse(line);
    ASSERT_TRUE(byID.contains(message["id"])) << message["id"];
    EXPECT_EQ(message["labels"], byID[message["id"]]["labels"]);
    EXPECT_EQ(message["from"]["address"], byID[message["id"]]["from"]["address"]);
  }
}

TEST_F(ExportCommandTest, noChosenMessageIsAFailureThatKeepsTheFile) {
  const auto file = world.file("kept.csv", "old");
  const auto result =
      world.run("export", "--format", "csv", "--output", file, "--subject", "nothing has this subject");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("No hay mensajes para exportar"));
  EXPECT_EQ(read(file), "old");
}

TEST_F(ExportCommandTest, aFileThatCannotBeWrittenIsToldWithTheReason) {
  const auto result =
      world.run("export", "--format", "csv", "--output", (world.folder() / "missing/out.csv").string());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("Error al escribir el archivo: “out.csv” could not be written"));
}

TEST_F(ExportCommandTest, aPipeTakesTheBytes) {
  const auto result = world.run("export", "--format", "csv", "--output", "/dev/stdout");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n"));
}

TEST(ExportCommandLineTest, formatAndOutputAreNeededAndTheFormatKnown) {
  EXPECT_THROW(parseCommandLine({"export"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"export", "--format", "csv"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"export", "--output", "x"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"export", "--format", "pdf", "--output", "x"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"messages", "--format", "csv"}), UsageFailure);
  const auto line = parseCommandLine({"export", "--format=mbox", "--output", "x", "--library", "L"});
  EXPECT_EQ(line.exportFormat, ExportUtility::ExportFormat::mbox);
  EXPECT_EQ(line.exportFile, "x");
  EXPECT_THAT(line.selectors.inLibraries, ::testing::ElementsAre("L"));
}

TEST(ExportCommandDiskTest, aFullDiskLeavesNoHalfFileAndKeepsAnExistingOne) {
  const World world;
  fs::create_directory(world.folder() / "disk");
  std::string bytes;
  bench::generateArchive({.bytes = 5'000'000}, [&](std::string_view message) { bytes += message; });
  const auto archive = world.file("archive.mbox", bytes);
  ASSERT_EQ(world.run("import", archive).status, 0);
  // A small file system in memory, seen by this shell alone.
  const std::string script = R"sh(
    mount -t tmpfs -o size=1m tmpfs "$DISK" || exit 77
    echo old >"$DISK/kept.json"
    "$CTL" export --format json --output "$DISK/kept.json" 2>"$OUT" && exit 1
    "$CTL" export --format json --output "$DISK/new.json" 2>>"$OUT" && exit 2
    [ "$(cat "$DISK/kept.json")" = old ] || exit 3
    [ "$(ls -A "$DISK")" = kept.json ] || exit 4
  )sh";
  Program shell("/usr/bin/unshare");
  for (const char* name : {"data", "config", "cache"}) {
    std::string variable = std::string("XDG_") + name + "_HOME";
    std::transform(variable.begin(), variable.end(), variable.begin(), ::toupper);
    shell.setEnvironment(variable, world.folder() / name);
  }
  shell.setEnvironment("DISK", world.folder() / "disk");
  shell.setEnvironment("OUT", world.folder() / "errors");
  shell.setEnvironment("CTL", std::string(TIDEWRACK_BINARY_DIR) + "/tidewrackctl");
  shell.setEnvironment("LC_ALL", "C.UTF-8");
  const auto result = shell.run({"--map-root-user", "--mount", "/bin/sh", "-c", script});
  if (result.status == 77 || result.errors.find("unshare failed") != std::string::npos) {
    GTEST_SKIP() << "no file system can be mounted here: " << result.errors;
  }
  EXPECT_EQ(result.status, 0) << result.errors << read(world.folder() / "errors");
  EXPECT_THAT(read(world.folder() / "errors"), HasSubstr("No space left on device"));
}

}  // namespace
}  // namespace tidewrack
