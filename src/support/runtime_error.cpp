#include "support/runtime_error.h"

namespace dxfimport {

std::string RunTimeText(int number) {
  switch (number) {
    case kErrInvalidCall:
      return "Invalid procedure call or argument";
    case kErrOverflow:
      return "Overflow";
    case kErrOutOfMemory:
      return "Out of memory";
    case kErrSubscript:
      return "Subscript out of range";
    case kErrDivisionByZero:
      return "Division by zero";
    case kErrTypeMismatch:
      return "Type mismatch";
    case kErrBadFileName:
      return "Bad file name or number";
    case kErrFileNotFound:
      return "File not found";
    case kErrInputPastEnd:
      return "Input past end of file";
    case kErrPathFileAccess:
      return "Path/File access error";
    default:
      return "Application-defined or object-defined error";
  }
}

RunTimeError::RunTimeError(int number) : RunTimeError(number, RunTimeText(number)) {}

RunTimeError::RunTimeError(int number, const std::string& text)
    : std::runtime_error(text), number_(number), text_(text) {}

}  // namespace dxfimport
