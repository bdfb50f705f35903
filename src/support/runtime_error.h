#pragma once

#include <stdexcept>
#include <string>

namespace dxfimport {

// The run time's error numbers that this program raises and reports.
enum RunTimeErrorNumber : int {
  kErrInvalidCall = 5,
  kErrOverflow = 6,
  kErrOutOfMemory = 7,
  kErrSubscript = 9,
  kErrDivisionByZero = 11,
  kErrTypeMismatch = 13,
  kErrBadFileName = 52,
  kErrFileNotFound = 53,
  kErrInputPastEnd = 62,
  kErrPathFileAccess = 75,
};

// The run time's own text for an error number ("Overflow", "Subscript out of range", ...).
std::string RunTimeText(int number);

// A run-time error as the old run time raised it: a number and its text. Thrown where an
// operation fails and caught at procedure boundaries, which hand it to ReportError.
class RunTimeError : public std::runtime_error {
 public:
  explicit RunTimeError(int number);
  RunTimeError(int number, const std::string& text);

  int number() const { return number_; }
  const std::string& text() const { return text_; }

 private:
  int number_;
  std::string text_;
};

}  // namespace dxfimport
