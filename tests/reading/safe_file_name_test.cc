#include "reading/safe_file_name.h"

#include <string>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

TEST(SafeFileName, OrdinaryNamesStay) {
  EXPECT_EQ(safeFileName("report 2024.pdf"), "report 2024.pdf");
  EXPECT_EQ(safeFileName("год.ods"), "год.ods");
  EXPECT_EQ(safeFileName("archive.tar.gz"), "archive.tar.gz");
  EXPECT_EQ(safeFileName("👩‍👩‍👧 photo.jpg"), "👩‍👩‍👧 photo.jpg");
}

TEST(SafeFileName, NoPathSeparatorRemains) {
  EXPECT_EQ(safeFileName("../../etc/passwd"), "_.._etc_passwd");
  EXPECT_EQ(safeFileName("C:\\temp\\a.exe"), "C:_temp_a.exe");
  EXPECT_EQ(safeFileName("/"), "_");
}

TEST(SafeFileName, NoControlOrTurningCharacterRemains) {
  EXPECT_EQ(safeFileName(std::string("a\0b\nc\x7f.txt", 10)), "abc.txt");
  EXPECT_EQ(safeFileName("invoice\u202Efdp.exe"), "invoicefdp.exe");
  EXPECT_EQ(safeFileName("a\u2028b"), "ab");
}

TEST(SafeFileName, NoLeadingDotOrBlankRemains) {
  EXPECT_EQ(safeFileName(".bashrc"), "bashrc");
  EXPECT_EQ(safeFileName(" . hidden "), "hidden");
}

TEST(SafeFileName, NothingLeftGivesAName) {
  EXPECT_EQ(safeFileName(""), "attachment");
  EXPECT_EQ(safeFileName(".."), "attachment");
  EXPECT_EQ(safeFileName("\n"), "attachment");
}

TEST(SafeFileName, ALongNameIsCutAtACharacterAndKeepsItsEnding) {
  std::string longName;
  for (int i = 0; i < 300; ++i) {
    longName += "ñ";
  }
  const std::string safe = safeFileName(longName + ".pdf");
  EXPECT_EQ(safe.size(), 200U);
  EXPECT_TRUE(safe.ends_with("ñ.pdf"));
  EXPECT_LE(safeFileName(std::string(100000, 'x')).size(), 200U);
}

}  // namespace
}  // namespace tidewrack
