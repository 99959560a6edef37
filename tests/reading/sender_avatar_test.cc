#include "reading/sender_avatar.h"

#include <functional>
#include <memory>
#include <string>

#include <glib.h>
#include <gtest/gtest.h>

#include "reading/avatar_server.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

class SenderAvatarTest : public testing::Test {
 protected:
  SenderAvatarTest() { service_.follow(settings_); }

  void enable(bool isEnabled) { settings_.set(SettingKey::avatarGravatarEnabled, isEnabled); }
  std::unique_ptr<SenderAvatar> makeAvatar() {
    return std::make_unique<SenderAvatar>(service_, settings_, [this] { ++changes_; });
  }
  static bool runUntil(const std::function<bool()>& isDone) {
    bool late = false;
    const guint deadline = g_timeout_add_seconds(
        20,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_CONTINUE;
        },
        &late);
    while (!isDone() && !late) {
      g_main_context_iteration(nullptr, TRUE);
    }
    g_source_remove(deadline);
    return !late;
  }

  TemporaryFolder folder_;
  Settings settings_{folder_ / "settings.ini"};
  AvatarServer server_;
  GravatarService service_{folder_ / "Gravatar", server_.url};
  int changes_ = 0;
};

TEST_F(SenderAvatarTest, WithTheSettingOffNobodyIsAsked) {
  const auto avatar = makeAvatar();
  avatar->setAddress("ana@example.org");
  EXPECT_EQ(avatar->image(), nullptr);
  EXPECT_EQ(changes_, 0);
  EXPECT_EQ(server_.requests, 0);
}

TEST_F(SenderAvatarTest, WithTheSettingOnThePictureArrives) {
  enable(true);
  const auto avatar = makeAvatar();
  avatar->setAddress("ana@example.org");
  ASSERT_TRUE(runUntil([&] { return avatar->image() != nullptr; }));
  EXPECT_EQ(changes_, 1);
  avatar->setAddress("ana@example.org");
  EXPECT_EQ(changes_, 1);
}

TEST_F(SenderAvatarTest, TurningTheSettingOffTakesThePictureAwayAndRemovesAllFiles) {
  enable(true);
  const auto avatar = makeAvatar();
  avatar->setAddress("ana@example.org");
  ASSERT_TRUE(runUntil([&] { return avatar->image() != nullptr; }));
  EXPECT_FALSE(std::filesystem::is_empty(folder_ / "Gravatar"));
  enable(false);
  EXPECT_EQ(avatar->image(), nullptr);
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "Gravatar"));
  // Turning it on again looks everything up anew.
  enable(true);
  ASSERT_TRUE(runUntil([&] { return avatar->image() != nullptr; }));
  EXPECT_EQ(server_.requests, 2);
}

TEST_F(SenderAvatarTest, APictureThatArrivesForAnEarlierSenderIsDropped) {
  enable(true);
  const auto avatar = makeAvatar();
  avatar->setAddress("ana@example.org");
  avatar->setAddress("");
  const auto other = makeAvatar();
  other->setAddress("ana@example.org");
  ASSERT_TRUE(runUntil([&] { return other->image() != nullptr; }));
  EXPECT_EQ(avatar->image(), nullptr);
}

TEST_F(SenderAvatarTest, AnAvatarThatIsGoneDropsWhatComesBack) {
  enable(true);
  auto gone = makeAvatar();
  gone->setAddress("ana@example.org");
  gone.reset();
  const auto other = makeAvatar();
  other->setAddress("ana@example.org");
  ASSERT_TRUE(runUntil([&] { return other->image() != nullptr; }));
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(server_.requests, 1);
}

}  // namespace
}  // namespace tidewrack
