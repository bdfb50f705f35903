#include "support/text_decode.h"

#include <gtest/gtest.h>

namespace dxfimport {
namespace {

TEST(DecodeText, KeepsUtf8AndTakesEverythingElseAsWindows1252) {
  EXPECT_EQ(DecodeText("plain"), "plain");
  EXPECT_EQ(DecodeText("\xC3\x98 12"), "\u00D8 12");
  EXPECT_EQ(DecodeText("\xD8 12"), "\u00D8 12");
  EXPECT_EQ(DecodeText("\x80\x93"), "\u20AC\u201C");
  EXPECT_EQ(DecodeText(std::string_view("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));  // a surrogate
  EXPECT_FALSE(IsValidUtf8("\xC0\xAF"));      // overlong
}

TEST(FixedFields, CutAndPadCountCharactersNotBytes) {
  EXPECT_EQ(CutChars("\u00D8\u00D8abc", 3), "\u00D8\u00D8a");
  EXPECT_EQ(CutChars("ab", 5), "ab");
  EXPECT_EQ(CharCount("\u00B0C"), 2u);
  EXPECT_EQ(PadToWidth("\u00B0", 3), "\u00B0  ");
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(TrimRight(" a\t "), " a\t");
}

}  // namespace
}  // namespace dxfimport
