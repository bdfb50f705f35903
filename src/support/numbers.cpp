#include "support/numbers.h"

#include <QLocale>
#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "support/runtime_error.h"

namespace dxfimport {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

struct NumberSpan {
  std::size_t begin = 0;  // first character of the number (sign included)
  std::size_t end = 0;    // one past its last character
  bool valid = false;
};

// Finds the longest decimal prefix after leading blanks.
NumberSpan ScanNumber(std::string_view s) {
  NumberSpan span;
  std::size_t i = 0;
  while (i < s.size() && IsBlank(s[i])) ++i;
  span.begin = i;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
  std::size_t digits = 0;
  while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
  }
  if (digits == 0) return span;
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
    std::size_t j = i + 1;
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
    if (j < s.size() && IsDigit(s[j])) {
      while (j < s.size() && IsDigit(s[j])) ++j;
      i = j;
    }
  }
  span.end = i;
  span.valid = true;
  return span;
}

// Decimal exponent of the leading significant digit, to tell overflow from underflow.
long MagnitudeOf(std::string_view number) {
  long intDigits = 0;
  long leadingFracZeros = 0;
  bool seenNonZero = false;
  bool inFraction = false;
  std::size_t i = 0;
  for (; i < number.size(); ++i) {
    char c = number[i];
    if (c == '.') {
      inFraction = true;
      continue;
    }
    if (!IsDigit(c)) break;
    if (!inFraction) {
      if (seenNonZero || c != '0') {
        seenNonZero = true;
        ++intDigits;
      }
    } else if (!seenNonZero) {
      if (c == '0')
        ++leadingFracZeros;
      else
        seenNonZero = true;
    }
  }
  long exponent = 0;
  if (i < number.size() && (number[i] == 'e' || number[i] == 'E')) {
    std::string_view rest = number.substr(i + 1);
    bool negative = !rest.empty() && rest[0] == '-';
    if (!rest.empty() && (rest[0] == '+' || rest[0] == '-')) rest.remove_prefix(1);
    for (char c : rest) {
      if (!IsDigit(c)) break;
      exponent = std::min<long>(exponent * 10 + (c - '0'), 100000);
    }
    if (negative) exponent = -exponent;
  }
  return (intDigits > 0 ? intDigits : -leadingFracZeros) + exponent;
}

// Plain decimals ("1234.567890") without an exponent, of at most 19 digits whose value
// is below 2^53 and with at most 22 decimals: the integer of their digits and the power
// of ten are both exact doubles, so one division gives the correctly rounded value, the
// same as from_chars. False for anything else.
bool FastDecimal(std::string_view s, double& value) {
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  uint64_t mantissa = 0;
  int digits = 0, decimals = 0;
  bool point = false;
  std::size_t i = 0;
  for (; i < s.size(); ++i) {
    char c = s[i];
    if (IsDigit(c)) {
      if (++digits > 19) return false;
      mantissa = mantissa * 10 + uint64_t(c - '0');
      decimals += point;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (digits == 0 || decimals > 22 || mantissa > (uint64_t(1) << 53)) return false;
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) return false;
  value = double(mantissa) / kPowers[decimals];
  return true;
}

}  // namespace

bool HasLeadingNumber(std::string_view text) { return ScanNumber(text.substr(0, kLongestNumber)).valid; }

double Val(std::string_view text) {
  text = text.substr(0, kLongestNumber);
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  // from_chars takes the longest decimal prefix itself; only "inf", "nan" and a lone
  // point must be kept from it.
  if (i >= text.size() || !(IsDigit(text[i]) || text[i] == '.')) return 0.0;
  double value = 0.0;
  if (FastDecimal(text.substr(i), value)) return negative ? -value : value;
  auto [ptr, ec] = std::from_chars(text.data() + i, text.data() + text.size(), value);
  if (ec == std::errc::invalid_argument) return 0.0;
  if (ec == std::errc::result_out_of_range) {
    if (MagnitudeOf(text.substr(i, std::size_t(ptr - text.data()) - i)) > 0) throw RunTimeError(kErrOverflow);
    value = 0.0;
  }
  return negative ? -value : value;
}

double HeldVal(std::string_view text) {
  try {
    return Val(text);
  } catch (const RunTimeError&) {
    const std::size_t sign = text.find_first_not_of(" \t");
    return sign != std::string_view::npos && text[sign] == '-' ? -DBL_MAX : DBL_MAX;
  }
}

void ThrowOverflow() { throw RunTimeError(kErrOverflow); }

float CSng(double value) {
  if (std::isnan(value) || std::abs(value) > static_cast<double>(FLT_MAX)) throw RunTimeError(kErrOverflow);
  return static_cast<float>(value);
}

NumberSeparators LocaleSeparators() {
  QLocale locale = QLocale::system();
  NumberSeparators sep;
  QString group = locale.groupSeparator();
  QString point = locale.decimalPoint();
  if (!group.isEmpty()) sep.group = group.toStdString();
  if (!point.isEmpty()) sep.point = point.toStdString();
  return sep;
}

namespace {

std::string GroupDigits(std::string_view digits, const std::string& group) {
  std::string out;
  out.reserve(digits.size() + digits.size() / 3 * group.size());
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) out += group;
    out += digits[i];
  }
  return out;
}

}  // namespace

std::string FormatGrouped(int64_t value, const NumberSeparators& sep) {
  std::string digits = std::to_string(value);
  bool negative = value < 0;
  if (negative) digits.erase(0, 1);
  return (negative ? "-" : "") + GroupDigits(digits, sep.group);
}

namespace {

// The sign (none for a value that shows as zero), the grouped whole part and the
// fraction after the point.
std::string SignedGrouped(bool negative, const std::string& intPart, const std::string& fracPart,
                          const NumberSeparators& sep) {
  bool zero =
      std::all_of(intPart.begin(), intPart.end(), [](char c) { return c == '0'; }) && fracPart.empty();
  std::string out = (negative && !zero) ? "-" : "";
  out += GroupDigits(intPart, sep.group);
  if (!fracPart.empty()) out += sep.point + fracPart;
  return out;
}

}  // namespace

std::string FormatSingleUpToTwo(float value, const NumberSeparators& sep) {
  if (!std::isfinite(value)) return std::isnan(value) ? "NaN" : (value < 0 ? "-Inf" : "Inf");
  // Seven significant digits, as the run time shows a single.
  char sci[32];
  auto sciEnd =
      std::to_chars(sci, sci + sizeof sci, std::abs(double(value)), std::chars_format::scientific, 6).ptr;
  std::string_view s(sci, sciEnd - sci);
  std::string mantissa;  // the seven digits
  for (char c : s.substr(0, s.find('e')))
    if (IsDigit(c)) mantissa += c;
  int exponent = 0;
  std::from_chars(s.data() + s.find('e') + 1 + (s[s.find('e') + 1] == '+'), s.data() + s.size(), exponent);

  std::string intPart;
  std::string fracPart;
  if (exponent >= 6) {
    intPart = mantissa + std::string(exponent - 6, '0');
  } else {
    double sig = 0;
    std::from_chars(s.data(), s.data() + s.size(), sig);
    char fixed[64];
    auto end = std::to_chars(fixed, fixed + sizeof fixed, sig, std::chars_format::fixed, 2).ptr;
    std::string_view f(fixed, end - fixed);
    intPart = std::string(f.substr(0, f.find('.')));
    fracPart = std::string(f.substr(f.find('.') + 1));
    while (!fracPart.empty() && fracPart.back() == '0') fracPart.pop_back();
  }
  return SignedGrouped(value < 0, intPart, fracPart, sep);
}

std::string FormatUpToTwo(double value, const NumberSeparators& sep) {
  if (!std::isfinite(value)) return std::isnan(value) ? "NaN" : (value < 0 ? "-Inf" : "Inf");
  char fixed[400];
  auto end = std::to_chars(fixed, fixed + sizeof fixed, std::abs(value), std::chars_format::fixed, 2).ptr;
  std::string_view f(fixed, end - fixed);
  std::string fracPart(f.substr(f.find('.') + 1));
  while (!fracPart.empty() && fracPart.back() == '0') fracPart.pop_back();
  return SignedGrouped(value < 0, std::string(f.substr(0, f.find('.'))), fracPart, sep);
}

}  // namespace dxfimport
