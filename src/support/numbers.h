#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dxfimport {

// Numbers are read from the first kLongestNumber characters of a text: any longer digit
// string is beyond the range of a double already.
inline constexpr std::size_t kLongestNumber = 4096;

// The numeric value of the leading part of a text, as the reader sees every DXF value:
// leading blanks skipped, then the longest decimal prefix (sign, digits, point, exponent).
// Text that holds no number gives 0; the locale is never consulted. A value beyond the
// range of a double raises the Overflow error; one too small for it gives 0.
double Val(std::string_view text);

// Val for values read while drawing (inline codes of texts), where no error may arise: a
// value beyond the range of a double is held at the largest double of its sign.
double HeldVal(std::string_view text);

// True when the text starts (after blanks) with something Val reads as a number.
bool HasLeadingNumber(std::string_view text);

// Rounds to the nearest whole number, ties to even (the floating unit's default rounding).
inline double RoundHalfEven(double value) {
  // Adding and taking away 1.5 * 2^52 leaves no fraction bits: the addition rounds.
  constexpr double kShift = 6755399441055744.0;
  if (value > -2251799813685248.0 && value < 2251799813685248.0) return (value + kShift) - kShift;
  return value;  // already whole (or NaN or infinite)
}

// The whole number nearest to a value, held within [lo, hi]; NaN gives lo. For counts and
// codes read from a file, where any double may arrive and no error is wanted.
inline int64_t HeldWhole(double value, int64_t lo, int64_t hi) {
  if (!(value >= double(lo))) return lo;
  if (!(value <= double(hi))) return hi;
  return static_cast<int64_t>(RoundHalfEven(value));
}

[[noreturn]] void ThrowOverflow();

// Conversions with the run time's rules: round half to even, Overflow when out of range.
inline int16_t CInt(double value) {
  double r = RoundHalfEven(value);
  if (!(r >= -32768.0 && r <= 32767.0)) ThrowOverflow();
  return static_cast<int16_t>(r);
}
inline int32_t CLng(double value) {
  double r = RoundHalfEven(value);
  if (!(r >= -2147483648.0 && r <= 2147483647.0)) ThrowOverflow();
  return static_cast<int32_t>(r);
}
float CSng(double value);

// Thousands and decimal separators of the user's locale.
struct NumberSeparators {
  std::string group = ",";
  std::string point = ".";
};
NumberSeparators LocaleSeparators();

// "#,##0": a whole number with grouped thousands.
std::string FormatGrouped(int64_t value, const NumberSeparators& sep);

// "#,##0.##" applied to a single-precision value: seven significant digits, at most two
// decimals, no trailing zeros and no lone decimal point.
std::string FormatSingleUpToTwo(float value, const NumberSeparators& sep);
// "#,##0.##" applied to a double: at most two decimals, no trailing zeros.
std::string FormatUpToTwo(double value, const NumberSeparators& sep);
// A single's digits, as FormatSingleUpToTwo.
inline std::string FormatUpToTwo(float value, const NumberSeparators& sep) {
  return FormatSingleUpToTwo(value, sep);
}

}  // namespace dxfimport
