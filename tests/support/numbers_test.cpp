#include "support/numbers.h"

#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstring>

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

TEST(Val, PlainDecimalsReadExactlyAsFromChars) {
  // Every plain decimal must give the same double as the library's correctly rounded
  // parse, whichever path reads it.
  const char* samples[] = {"0.1",
                           "1234.567890",
                           "-9999999.999999",
                           "0.000001",
                           "123456789012345678",
                           "9007199254740993",
                           "3.14159265358979323846",
                           "1e5",
                           "2.5E-3",
                           "0.30000000000000004",
                           "17.",
                           ".75",
                           "00012.5000",
                           "4503599627370496.5"};
  for (const char* text : samples) {
    std::string_view s(text);
    bool negative = s[0] == '-';
    if (negative) s.remove_prefix(1);
    double expected = 0;
    std::from_chars(s.data(), s.data() + s.size(), expected);
    EXPECT_EQ(Val(text), negative ? -expected : expected) << text;
  }
  for (int i = 0; i < 20000; ++i) {
    char text[32];
    std::snprintf(text, sizeof text, "%d.%06d", i * 7919 % 100000, i * 104729 % 1000000);
    double expected = 0;
    std::from_chars(text, text + std::strlen(text), expected);
    ASSERT_EQ(Val(text), expected) << text;
  }
}

TEST(Conversions, RoundHalfToEvenAndOverflow) {
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(3.5), 4);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(32767.4), 32767);
  EXPECT_EQ(CLng(0.5), 0);
  EXPECT_EQ(CLng(1.5), 2);
  EXPECT_EQ(CLng(-1.5), -2);
  EXPECT_EQ(CLng(2.4999999999999996), 2);
  EXPECT_EQ(CLng(-0.49999999999999994), 0);
  EXPECT_EQ(RoundHalfEven(4503599627370497.0), 4503599627370497.0);
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
