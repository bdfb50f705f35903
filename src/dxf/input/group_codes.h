#pragma once

#include <cstdint>
#include <string_view>

#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {

// Reads a plain group code ("  10") directly; false when the line needs the general read.
inline bool PlainGroupCode(std::string_view line, int16_t& code) {
  std::size_t i = 0;
  while (i < line.size() && line[i] == ' ') ++i;
  int value = 0;
  std::size_t digits = 0;
  for (; i < line.size() && digits < 4 && line[i] >= '0' && line[i] <= '9'; ++i, ++digits)
    value = value * 10 + (line[i] - '0');
  code = int16_t(value);
  return digits > 0 && i == line.size();
}

// The run time's numeric read of a code line: leading blanks, then a number. A code line
// that holds no number is a type mismatch; one beyond 16 bits an overflow.
inline int16_t GeneralGroupCode(std::string_view codeText) {
  if (!HasLeadingNumber(codeText) && !Trim(codeText).empty()) throw RunTimeError(kErrTypeMismatch);
  return CInt(Val(codeText));
}

}  // namespace dxfimport
