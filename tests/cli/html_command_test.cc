#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/world.h"

namespace tidewrack {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

TEST(HTMLCommandTest, PrintsTheDocumentOfAFileAndItsHintOnStandardError) {
  const World world;
  const auto file = world.file("a.html", "<body bgcolor=\"#000\">night</body>");
  const auto result = world.run("html", "--file", file, "--appearance", "light", "--invert");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr(":root { color-scheme: light; }"));
  EXPECT_THAT(result.output, HasSubstr("invert(1) hue-rotate(180deg)"));
  EXPECT_THAT(result.output, HasSubstr("<body bgcolor=\"#000\">night</body>"));
  EXPECT_EQ(result.errors, "dark\n");
}

TEST(HTMLCommandTest, WithoutInversionThereIsNoFilterAndAFragmentHasNoHint) {
  const World world;
  const auto result = world.run("html", "--file", world.file("a.html", "text"), "--appearance", "dark");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr(":root { color-scheme: dark; }"));
  EXPECT_THAT(result.output, Not(HasSubstr("invert(1)")));
  EXPECT_EQ(result.errors, "none\n");
}

TEST(HTMLCommandTest, PrintsTheDocumentOfAStoredMessageWithItsPictures) {
  const World world;
  const auto archive = world.file("a.mbox",
                                  "From a@example.org Thu Jan  1 00:00:00 2026\n"
                                  "Message-ID: <a@example.org>\n"
                                  "Content-Type: multipart/related; boundary=b\n\n"
                                  "--b\nContent-Type: text/html\n\n<img src=\"cid:p\">\n"
                                  "--b\nContent-Type: image/png\nContent-ID: <p>\n"
                                  "Content-Disposition: inline; filename=p.png\n"
                                  "Content-Transfer-Encoding: base64\n\nZm9v\n--b--\n");
  ASSERT_EQ(world.run("import", archive).status, 0);
  const auto result = world.run("html", "a@example.org", "--appearance", "light");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("data:image/png;base64,Zm9v"));
  EXPECT_EQ(result.errors, "none\n");
}

TEST(HTMLCommandTest, AMessageWithoutHTMLIsAFailure) {
  const World world;
  const auto archive = world.file("a.mbox",
                                  "From a@example.org Thu Jan  1 00:00:00 2026\n"
                                  "Message-ID: <a@example.org>\n\nText\n");
  ASSERT_EQ(world.run("import", archive).status, 0);
  const auto result = world.run("html", "a@example.org", "--appearance", "light");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("The message has no HTML body."));
}

}  // namespace
}  // namespace tidewrack
