// Starts the real program under Xvfb.

#include "support/program.h"

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

std::string readAll(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class ProgramTest : public testing::Test {
 protected:
  ProgramTest() {
    for (auto* program : {&withDisplay_, &withoutDisplay_, &control_}) {
      program->setEnvironment("HOME", folder_ / "home");
      program->setEnvironment("XDG_DATA_HOME", folder_ / "data");
      program->setEnvironment("XDG_CONFIG_HOME", folder_ / "config");
      program->setEnvironment("XDG_CACHE_HOME", folder_ / "cache");
      program->setEnvironment("XDG_STATE_HOME", folder_ / "state");
      program->setEnvironment("LC_ALL", "C.UTF-8");
      program->setEnvironment("GSK_RENDERER", "cairo");
    }
  }

  // Runs a shell line with a display and a session bus; "$tidewrack" is the program.
  ProgramResult runOnDisplay(const std::string& line) {
    return withDisplay_.run({"-a", "-s", "-screen 0 1280x900x24", "dbus-run-session", "--", "sh", "-c",
                             "tidewrack='" + program() + "'; " + line});
  }
  static std::string program() { return std::string(TIDEWRACK_BINARY_DIR) + "/tidewrack"; }
  static std::string sample() { return std::string(TIDEWRACK_SOURCE_DIR) + "/data/sample.mbox"; }
  std::size_t storedMessages() {
    const auto result = control_.run({"messages"});
    return static_cast<std::size_t>(std::count(result.output.begin(), result.output.end(), '\n'));
  }

  TemporaryFolder folder_;
  Program withDisplay_{"/usr/bin/xvfb-run"};
  Program withoutDisplay_{program()};
  Program control_{std::string(TIDEWRACK_BINARY_DIR) + "/tidewrackctl"};
};

TEST_F(ProgramTest, AFileOnTheCommandLineIsImportedAndShown) {
  const std::string picture = folder_ / "window.png";
  const auto result = runOnDisplay("exec \"$tidewrack\" --picture='" + picture + "' '" + sample() + "'");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(readAll(picture).starts_with("\x89PNG")) << result.errors;
  EXPECT_GE(storedMessages(), 10U);
}

TEST_F(ProgramTest, AFirstStartWritesTheFourSettingsOnly) {
  const auto result = runOnDisplay("exec \"$tidewrack\" --picture='" + (folder_ / "x.png").string() + "'");
  EXPECT_EQ(result.status, 0) << result.errors;
  const std::string settings = readAll(folder_ / "config/Tidewrack/settings.ini");
  for (const char* key : {"iCloudSyncEnabled=true", "spotlightIndexingEnabled=true",
                          "indexMessageBodies=true", "indexAttachments=true"}) {
    EXPECT_NE(settings.find(key), std::string::npos) << key << "\n" << settings;
  }
  EXPECT_EQ(settings.find("appLanguage"), std::string::npos);
}

TEST_F(ProgramTest, WithoutADisplayItSaysSoAndFails) {
  const auto result = withoutDisplay_.run({sample()});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("display"), std::string::npos) << result.errors;
}

TEST_F(ProgramTest, ASecondLaunchHandsItsFileToTheFirst) {
  // The first one quits when it is told to, once the second one's file is in the catalog.
  const auto result = runOnDisplay(
      "\"$tidewrack\" & first=$!; "
      "gdbus wait --session --timeout 60 io.marloon.Tidewrack || exit 3; "
      "\"$tidewrack\" '" +
      sample() +
      "' || exit 4; "
      "catalog=\"$XDG_DATA_HOME/Tidewrack/libraries.json\"; "
      "timeout 60 sh -c \"until grep -q sample '$catalog' 2>/dev/null; do read -t 0.1 _ </dev/zero || :; "
      "done\" || "
      "timeout 60 sh -c \"until grep -q sample '$catalog' 2>/dev/null; do :; done\" || exit 5; "
      "gdbus call --session --dest io.marloon.Tidewrack --object-path /io/marloon/Tidewrack "
      "--method org.freedesktop.Application.ActivateAction quit '[]' '{}' >/dev/null || exit 6; "
      "wait $first");
  EXPECT_EQ(result.status, 0) << result.errors;
  const auto libraries = control_.run({"libraries"});
  EXPECT_NE(libraries.output.find("sample"), std::string::npos) << libraries.output << libraries.errors;
}

constexpr const char* startAndWaitForTheEnd = "timeout 60 \"$tidewrack\" --picture=/dev/null";

TEST_F(ProgramTest, AStoreThatCannotBeOpenedIsMovedAsideAndAFreshOneTakesItsPlace) {
  // A folder stands where the store should be.
  const auto folder = folder_ / "data/Tidewrack";
  std::filesystem::create_directories(folder / "default.store/in the way");
  const auto result = runOnDisplay(startAndWaitForTheEnd);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(std::filesystem::is_regular_file(folder / "default.store"));
  bool isKept = false;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    isKept = isKept || entry.path().filename() == "in the way";
  }
  EXPECT_TRUE(isKept);
}

TEST_F(ProgramTest, WithoutAPlaceForAStoreItEndsWithAMessage) {
  // A file stands where the folder of the store should be.
  std::filesystem::create_directories(folder_ / "data");
  std::ofstream(folder_ / "data/Tidewrack") << "in the way";
  const auto result = runOnDisplay(startAndWaitForTheEnd);
  EXPECT_NE(result.errors.find("tidewrack: "), std::string::npos) << result.errors;
  EXPECT_NE(result.status, 0);
}

TEST_F(ProgramTest, ASecondLaunchWithoutFilesEndsAndTheFirstGoesOn) {
  const auto result = runOnDisplay(
      "\"$tidewrack\" & first=$!; "
      "gdbus wait --session --timeout 60 io.marloon.Tidewrack || exit 3; "
      "timeout 60 \"$tidewrack\" || exit 4; "
      "kill -0 $first || exit 5; "
      "gdbus call --session --dest io.marloon.Tidewrack --object-path /io/marloon/Tidewrack "
      "--method org.freedesktop.Application.ActivateAction quit '[]' '{}' >/dev/null || exit 6; "
      "wait $first");
  EXPECT_EQ(result.status, 0) << result.errors;
}

TEST_F(ProgramTest, TheSessionBusCanStartIt) {
  // As the session bus does: the service first, then what it is wanted for.
  const auto result = runOnDisplay(
      "G_MESSAGES_DEBUG=App \"$tidewrack\" --gapplication-service & service=$!; "
      "gdbus wait --session --timeout 60 io.marloon.Tidewrack || exit 3; "
      "gdbus call --session --dest io.marloon.Tidewrack --object-path /io/marloon/Tidewrack "
      "--method org.freedesktop.Application.Activate '{}' >/dev/null || exit 4; "
      "for action in help preferences quit; do "
      "gdbus call --session --dest io.marloon.Tidewrack --object-path /io/marloon/Tidewrack "
      "--method org.freedesktop.Application.ActivateAction $action '[]' '{}' >/dev/null || exit 5; done; "
      "wait $service");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(result.errors.find("Tidewrack v" TIDEWRACK_VERSION " (build 1)"), std::string::npos)
      << result.errors;
  EXPECT_NE(result.errors.find("Usuario solicitó ayuda"), std::string::npos) << result.errors;
}

TEST_F(ProgramTest, ScreenshotsShowMadeUpMailAndLeaveTheStoreAlone) {
  const std::string picture = folder_ / "demo.png";
  const auto result = runOnDisplay("exec \"$tidewrack\" --screenshots --picture='" + picture + "'");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(readAll(picture).starts_with("\x89PNG")) << result.errors;
  EXPECT_FALSE(std::filesystem::exists(folder_ / "data/Tidewrack/default.store"));
}

TEST_F(ProgramTest, AnInstallationBringsAllItsFilesAndWorksFromItsOwnPlace) {
  Program cmake("/usr/bin/cmake");
  cmake.setEnvironment("DESTDIR", folder_ / "root");
  const auto installed = cmake.run({"--install", TIDEWRACK_BINARY_DIR, "--prefix", "/usr"});
  ASSERT_EQ(installed.status, 0) << installed.errors;
  const std::filesystem::path prefix = folder_ / "root/usr";
  for (const char* file :
       {"bin/tidewrack", "bin/tidewrackctl", "share/applications/io.marloon.Tidewrack.desktop",
        "share/metainfo/io.marloon.Tidewrack.metainfo.xml",
        "share/dbus-1/services/io.marloon.Tidewrack.service",
        "share/icons/hicolor/scalable/apps/io.marloon.Tidewrack.svg",
        "share/icons/hicolor/symbolic/apps/io.marloon.Tidewrack-symbolic.svg",
        "share/tidewrack/schemas/gschemas.compiled", "share/locale/ar/LC_MESSAGES/tidewrack.mo",
        "share/locale/zh_CN/LC_MESSAGES/tidewrack.mo", "share/man/man1/tidewrack.1",
        "share/man/man1/tidewrackctl.1"}) {
    EXPECT_TRUE(std::filesystem::exists(prefix / file)) << file;
  }
  EXPECT_NE(readAll(prefix / "share/dbus-1/services/io.marloon.Tidewrack.service")
                .find("Exec=/usr/bin/tidewrack --gapplication-service"),
            std::string::npos);
  Program moved(prefix / "bin/tidewrackctl");
  moved.setEnvironment("XDG_DATA_HOME", folder_ / "data");
  moved.setEnvironment("XDG_CONFIG_HOME", folder_ / "config");
  const auto result = moved.run({"import", sample()});
  EXPECT_EQ(result.status, 0) << result.errors;
}

TEST_F(ProgramTest, WrongUsageAndQuestionsAreAnswered) {
  EXPECT_EQ(withoutDisplay_.run({"--nonsense"}).status, 2);
  EXPECT_EQ(withoutDisplay_.run({"--version"}).output, "tidewrack " TIDEWRACK_VERSION "\n");
  EXPECT_NE(withoutDisplay_.run({"--help"}).output.find("Usage: tidewrack"), std::string::npos);
}

}  // namespace
}  // namespace tidewrack
