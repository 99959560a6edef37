#include "cli/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using Command = CommandLine::Command;
using Form = CommandLine::Form;
using Part = CommandLine::Part;

TEST(CommandLineTest, readsEveryCommand) {
  EXPECT_EQ(parseCommandLine({"parse", "a.mbox", "b.mbox"}).command, Command::parse);
  EXPECT_EQ(parseCommandLine({"parse", "a.mbox", "b.mbox"}).operands,
            (std::vector<std::string>{"a.mbox", "b.mbox"}));
  EXPECT_EQ(parseCommandLine({"import", "a.mbox"}).command, Command::import);
  EXPECT_EQ(parseCommandLine({"libraries"}).command, Command::libraries);
  EXPECT_EQ(parseCommandLine({"messages"}).command, Command::messages);
  EXPECT_EQ(parseCommandLine({"classify"}).command, Command::classify);
  EXPECT_EQ(parseCommandLine({"classify", "a.mbox", "b.mbox"}).operands.size(), 2U);
  EXPECT_EQ(parseCommandLine({"tokenize", "some text"}).command, Command::tokenize);
  EXPECT_EQ(parseCommandLine({"show", "id"}).command, Command::show);
  EXPECT_EQ(parseCommandLine({"rename", "id", "new name"}).command, Command::rename);
  EXPECT_EQ(parseCommandLine({"delete", "id"}).command, Command::deleteLibrary);
  EXPECT_EQ(parseCommandLine({"--version"}).command, Command::version);
}

TEST(CommandLineTest, htmlTakesAMessageOrAFileAndAnAppearance) {
  const auto stored = parseCommandLine({"html", "id", "--appearance", "dark", "--invert"});
  EXPECT_EQ(stored.command, Command::html);
  EXPECT_EQ(stored.operands, (std::vector<std::string>{"id"}));
  EXPECT_FALSE(stored.operandIsFile);
  EXPECT_EQ(stored.appearance, HTMLAppearance::dark);
  EXPECT_TRUE(stored.invertsContent);
  const auto file = parseCommandLine({"html", "--file=a.html", "--appearance=light"});
  EXPECT_EQ(file.operands, (std::vector<std::string>{"a.html"}));
  EXPECT_TRUE(file.operandIsFile);
  EXPECT_FALSE(file.invertsContent);
  EXPECT_THROW(parseCommandLine({"html", "id"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"html", "--appearance", "light"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"html", "id", "--appearance", "grey"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"html", "id", "--file", "a.html", "--appearance", "light"}), UsageFailure);
  EXPECT_THROW(parseCommandLine({"show", "id", "--appearance", "light"}), UsageFailure);
}

TEST(CommandLineTest, helpWinsOverEverythingBeforeTheEndOfOptions) {
  EXPECT_EQ(parseCommandLine({"--help"}).command, Command::help);
  EXPECT_EQ(parseCommandLine({"parse", "--help"}).command, Command::help);
  EXPECT_EQ(parseCommandLine({"parse", "--", "--help"}).command, Command::parse);
}

TEST(CommandLineTest, readsOptionsInAnyPlaceAndInBothForms) {
  const auto line = parseCommandLine({"messages", "--digest", "--library", "ID"});
  EXPECT_EQ(line.form, Form::digest);
  EXPECT_THAT(line.selectors.inLibraries, ::testing::ElementsAre("ID"));
  EXPECT_THAT(parseCommandLine({"messages", "--library=ID", "--json"}).selectors.inLibraries,
              ::testing::ElementsAre("ID"));
  EXPECT_EQ(parseCommandLine({"parse", "file", "--digest"}).form, Form::digest);
  EXPECT_EQ(parseCommandLine({"show", "id", "--text"}).part, Part::text);
  EXPECT_EQ(parseCommandLine({"show", "--html", "id"}).part, Part::html);
  const auto save = parseCommandLine({"show", "id", "--attachments", "folder"});
  EXPECT_EQ(save.part, Part::attachments);
  EXPECT_EQ(save.attachmentsFolder, "folder");
}

TEST(CommandLineTest, anArgumentBehindTheEndOfOptionsIsNoOption) {
  EXPECT_EQ(parseCommandLine({"parse", "--", "--digest"}).operands, (std::vector<std::string>{"--digest"}));
  EXPECT_EQ(parseCommandLine({"show", "--", "-id@example.org"}).operands[0], "-id@example.org");
}

TEST(CommandLineTest, refusesWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"unknown"},
      {"--unknown"},
      {"parse"},
      {"import"},
      {"show"},
      {"show", "one", "two"},
      {"rename", "id"},
      {"rename", "id", " \t "},
      {"delete"},
      {"libraries", "extra"},
      {"messages", "extra"},
      {"messages", "--library"},
      {"messages", "--library="},
      {"messages", "--json", "--digest"},
      {"messages", "--json", "--count"},
      {"messages", "--mailbox", "Work"},
      {"messages", "--gmail-category", "inbox"},
      {"messages", "--since", "yesterday"},
      {"messages", "--until", "2026-02-30"},
      {"messages", "--attachments", "some"},
      {"messages", "--size", "huge"},
      {"messages", "--html-only=yes"},
      {"messages", "--subject", "a", "--subject", "a"},
      {"messages", "--since", "2026-01-01", "--since=2026-01-02"},
      {"messages", "--in-conversations=1"},
      {"messages", "--search"},
      {"show", "id", "--search", "word"},
      {"classify", "--mailbox", "inbox"},
      {"tokenize"},
      {"tokenize", "two", "texts"},
      {"parse", "--json", "file"},
      {"parse", "--digest=yes", "file"},
      {"show", "id", "--text", "--html"},
      {"show", "id", "--attachments"},
      {"--version", "more"},
  };
  for (const auto& arguments : wrong) {
    EXPECT_THROW(parseCommandLine(arguments), UsageFailure) << ::testing::PrintToString(arguments);
  }
}

}  // namespace
}  // namespace tidewrack
