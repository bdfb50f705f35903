#include <gtest/gtest.h>

#include <clocale>

#include "support/numbers.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

TEST(Val, ReadsTheLeadingNumberWhateverTheLocale) {
  std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  EXPECT_DOUBLE_EQ(Val("  12.5"), 12.5);
  EXPECT_DOUBLE_EQ(Val("-3.25e2xyz"), -325);
  EXPECT_DOUBLE_EQ(Val("+.5"), 0.5);
  EXPECT_DOUBLE_EQ(Val("7."), 7);
  EXPECT_DOUBLE_EQ(Val("1e"), 1);
  EXPECT_DOUBLE_EQ(Val("12,5"), 12);
  EXPECT_DOUBLE_EQ(Val("abc"), 0);
  EXPECT_DOUBLE_EQ(Val(""), 0);
  EXPECT_DOUBLE_EQ(Val("inf"), 0);
  EXPECT_DOUBLE_EQ(Val("nan"), 0);
  EXPECT_DOUBLE_EQ(Val("1e-999"), 0);
  EXPECT_THROW(Val("1e999"), RunTimeError);
  EXPECT_THROW(Val(std::string(400, '9')), RunTimeError);
  std::setlocale(LC_NUMERIC, "C");
}

TEST(Conversions, RoundHalfToEvenAndOverflow) {
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(3.5), 4);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(32767.4), 32767);
  EXPECT_EQ(CLng(-2147483648.0), INT32_MIN);
  try {
    CInt(32767.5);
    FAIL();
  } catch (const RunTimeError& e) {
    EXPECT_EQ(e.number(), 6);
    EXPECT_EQ(e.text(), "Overflow");
  }
  EXPECT_THROW(CLng(3e9), RunTimeError);
  EXPECT_THROW(CSng(1e39), RunTimeError);
  EXPECT_FLOAT_EQ(CSng(3.4e38), 3.4e38f);
}

TEST(Formats, GroupedWholeNumbersAndSinglesWithUpToTwoDecimals) {
  NumberSeparators en;
  EXPECT_EQ(FormatGrouped(1234567, en), "1,234,567");
  EXPECT_EQ(FormatGrouped(0, en), "0");
  EXPECT_EQ(FormatGrouped(999, en), "999");
  EXPECT_EQ(FormatSingleUpToTwo(1e30f, en), "1,000,000,000,000,000,000,000,000,000,000");
  EXPECT_EQ(FormatSingleUpToTwo(-1e30f, en), "-1,000,000,000,000,000,000,000,000,000,000");
  EXPECT_EQ(FormatSingleUpToTwo(1234.567f, en), "1,234.57");
  EXPECT_EQ(FormatSingleUpToTwo(5.0f, en), "5");
  EXPECT_EQ(FormatSingleUpToTwo(0.5f, en), "0.5");
  EXPECT_EQ(FormatSingleUpToTwo(-0.001f, en), "0");
  EXPECT_EQ(FormatSingleUpToTwo(12345678.0f, en), "12,345,680");
  NumberSeparators de{".", ","};
  EXPECT_EQ(FormatSingleUpToTwo(1234.5f, de), "1.234,5");
}

}  // namespace
}  // namespace dxfimport
