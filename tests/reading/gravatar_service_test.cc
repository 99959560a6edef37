#include "reading/gravatar_service.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include <glib.h>
#include <gtest/gtest.h>

#include "reading/avatar.h"
#include "reading/avatar_server.h"

namespace tidewrack {
namespace {

class GravatarServiceTest : public testing::Test {
 protected:
  GravatarServiceTest() {
    std::string name = std::filesystem::temp_directory_path() / "tidewrack-avatars-XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder_ = std::filesystem::path(name) / "Gravatar";
  }
  ~GravatarServiceTest() override { std::filesystem::remove_all(folder_.parent_path()); }

  [[nodiscard]] std::unique_ptr<GravatarService> makeService(
      std::chrono::seconds timeout = std::chrono::seconds(8)) const {
    return std::make_unique<GravatarService>(folder_, server_.url, timeout);
  }

  static void runUntil(const std::function<bool()>& isDone) {
    bool late = false;
    const auto markLate = [](gpointer flag) -> gboolean {
      *static_cast<bool*>(flag) = true;
      return G_SOURCE_CONTINUE;
    };
    const guint deadline = g_timeout_add_seconds(20, markLate, &late);
    while (!isDone() && !late) {
      g_main_context_iteration(nullptr, TRUE);
    }
    EXPECT_FALSE(late) << "nothing came within 20 seconds";
    g_source_remove(deadline);
  }

  static std::shared_ptr<const Picture> lookUp(GravatarService& service, const std::string& address) {
    auto task = service.avatar(address);
    runUntil([&task] { return task.done(); });
    return task.await_resume();
  }

  [[nodiscard]] std::filesystem::path file(const std::string& address, const char* suffix = "") const {
    return folder_ / (avatarHash(address) + suffix);
  }

  AvatarServer server_;
  std::filesystem::path folder_;
};

TEST_F(GravatarServiceTest, AsksForTheHashAt160PixelsWithoutADefaultPicture) {
  const auto service = makeService();
  const auto picture = lookUp(*service, "ana@example.org");
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->width, 1);
  EXPECT_EQ(server_.lastPath, "/avatar/" + avatarHash("ana@example.org"));
  EXPECT_EQ(server_.lastQuery, "s=160&d=404");
}

TEST_F(GravatarServiceTest, KeepsThePictureOnDiskAsItWasDownloaded) {
  const auto service = makeService();
  lookUp(*service, "ana@example.org");
  std::ifstream stored(file("ana@example.org"), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stored), {}), pngBytes());
}

TEST_F(GravatarServiceTest, TwoSpellingsThatDifferInCaseAndBlanksAreOneAddress) {
  const auto service = makeService();
  lookUp(*service, "ana@example.org");
  EXPECT_NE(lookUp(*service, "  ANA@Example.org "), nullptr);
  EXPECT_EQ(server_.requests, 1);
}

TEST_F(GravatarServiceTest, AnEmptyAddressMakesNoRequest) {
  const auto service = makeService();
  EXPECT_EQ(lookUp(*service, "  "), nullptr);
  EXPECT_EQ(server_.requests, 0);
}

TEST_F(GravatarServiceTest, TenRowsOfOneSenderMakeOneRequest) {
  const auto service = makeService();
  std::vector<Task<GravatarService::PicturePointer>> rows;
  for (int i = 0; i < 10; ++i) {
    rows.push_back(service->avatar("ana@example.org"));
  }
  for (auto& row : rows) {
    runUntil([&row] { return row.done(); });
    EXPECT_NE(row.await_resume(), nullptr);
  }
  EXPECT_EQ(server_.requests, 1);
}

TEST_F(GravatarServiceTest, AMissingFileKeepsFromAskingEvenAfterARelaunch) {
  server_.answer = AvatarServer::Answer::status;
  server_.status = 404;
  EXPECT_EQ(lookUp(*makeService(), "ana@example.org"), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(file("ana@example.org", ".missing")));
  server_.answer = AvatarServer::Answer::picture;
  EXPECT_EQ(lookUp(*makeService(), "ana@example.org"), nullptr);
  EXPECT_EQ(server_.requests, 1);
}

TEST_F(GravatarServiceTest, APictureOnDiskIsShownWithoutARequest) {
  lookUp(*makeService(), "ana@example.org");
  EXPECT_NE(lookUp(*makeService(), "ana@example.org"), nullptr);
  EXPECT_EQ(server_.requests, 1);
}

TEST_F(GravatarServiceTest, APassingServerErrorMarksTheAddressAsMissing) {
  server_.answer = AvatarServer::Answer::status;
  const auto service = makeService();
  for (const unsigned status : {429U, 500U, 302U}) {
    server_.status = status;
    const auto address = std::to_string(status) + "@example.org";
    EXPECT_EQ(lookUp(*service, address), nullptr);
    EXPECT_TRUE(std::filesystem::exists(file(address, ".missing"))) << status;
  }
}

TEST_F(GravatarServiceTest, ASuccessThatIsNoPictureMarksTheAddressAsMissing) {
  server_.answer = AvatarServer::Answer::rubbish;
  EXPECT_EQ(lookUp(*makeService(), "ana@example.org"), nullptr);
  EXPECT_TRUE(std::filesystem::exists(file("ana@example.org", ".missing")));
  EXPECT_FALSE(std::filesystem::exists(file("ana@example.org")));
}

TEST_F(GravatarServiceTest, ATimeOutLeavesNoMissingFileAndTheNextLaunchRetries) {
  server_.answer = AvatarServer::Answer::hang;
  {
    const auto service = makeService(std::chrono::seconds(1));
    EXPECT_EQ(lookUp(*service, "ana@example.org"), nullptr);
    EXPECT_EQ(lookUp(*service, "ana@example.org"), nullptr);
    EXPECT_EQ(server_.requests, 1) << "this launch remembers";
  }
  EXPECT_FALSE(std::filesystem::exists(file("ana@example.org", ".missing")));
  server_.answer = AvatarServer::Answer::picture;
  EXPECT_NE(lookUp(*makeService(), "ana@example.org"), nullptr);
}

TEST_F(GravatarServiceTest, ACutConnectionLeavesNoMissingFile) {
  server_.answer = AvatarServer::Answer::cut;
  EXPECT_EQ(lookUp(*makeService(), "ana@example.org"), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file("ana@example.org", ".missing")));
}

TEST_F(GravatarServiceTest, ClearingTheCacheRemovesAllFilesAndLooksEverythingUpAnew) {
  const auto service = makeService();
  lookUp(*service, "ana@example.org");
  server_.answer = AvatarServer::Answer::status;
  server_.status = 404;
  lookUp(*service, "bob@example.org");
  service->clearCache();
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
  server_.answer = AvatarServer::Answer::picture;
  EXPECT_NE(lookUp(*service, "bob@example.org"), nullptr);
  EXPECT_NE(lookUp(*service, "ana@example.org"), nullptr);
  EXPECT_EQ(server_.requests, 4);
}

TEST_F(GravatarServiceTest, ClearingTheCacheEndsWhatIsUnderWayWithoutKeepingIt) {
  server_.answer = AvatarServer::Answer::hang;
  const auto service = makeService();
  auto waiting = service->avatar("ana@example.org");
  runUntil([this] { return server_.requests == 1; });
  service->clearCache();
  runUntil([&waiting] { return waiting.done(); });
  EXPECT_EQ(waiting.await_resume(), nullptr);
  server_.answer = AvatarServer::Answer::picture;
  EXPECT_NE(lookUp(*service, "ana@example.org"), nullptr);
}

TEST_F(GravatarServiceTest, AServiceThatCannotBeReachedGivesNoPicture) {
  GravatarService unreachable(folder_, "http://127.0.0.1:1");
  EXPECT_EQ(lookUp(unreachable, "ana@example.org"), nullptr);
  GravatarService wrong(folder_, "not an address");
  EXPECT_EQ(lookUp(wrong, "bob@example.org"), nullptr);
}

}  // namespace
}  // namespace tidewrack
