#include "dxf/mtext.h"

#include <cctype>

namespace dxfimport {
namespace {

// Codes followed by an argument up to ';'.
bool TakesArgument(char code) {
  switch (code) {
    case 'f': case 'F': case 'H': case 'W': case 'Q': case 'T': case 'A': case 'C': case 'c': case 'p':
      return true;
    default:
      return false;
  }
}

std::string SpecialSign(char code) {
  switch (std::tolower(static_cast<unsigned char>(code))) {
    case 'c': return "\u00D8";
    case 'd': return "\u00B0";
    case 'p': return "\u00B1";
    default: return "";
  }
}

}  // namespace

std::vector<std::string> MTextLines(std::string_view text) {
  std::vector<std::string> lines(1);
  auto newLine = [&lines] { lines.emplace_back(); };
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '{' || c == '}') continue;
    if (c == '^' && i + 1 < text.size()) {
      char next = text[++i];
      if (next == 'J') newLine();
      else if (next == 'I') lines.back() += ' ';
      else if (next == ' ') lines.back() += '^';
      continue;
    }
    if (c == '%' && i + 2 < text.size() && text[i + 1] == '%') {
      lines.back() += SpecialSign(text[i + 2]);
      i += 2;
      continue;
    }
    if (c != '\\' || i + 1 >= text.size()) {
      lines.back() += c;
      continue;
    }
    char code = text[++i];
    if (code == 'P' || code == 'X' || code == 'N') {
      newLine();
    } else if (code == '~') {
      lines.back() += ' ';
    } else if (code == '\\' || code == '{' || code == '}') {
      lines.back() += code;
    } else if (code == 'S') {
      std::size_t end = text.find(';', i);
      if (end == std::string_view::npos) end = text.size();
      for (char s : text.substr(i + 1, end - i - 1)) lines.back() += (s == '^' || s == '#') ? '/' : s;
      i = end;
    } else if (TakesArgument(code)) {
      std::size_t end = text.find(';', i);
      i = end == std::string_view::npos ? text.size() : end;
    }
    // Toggles (\L \l \O \o \K \k) and unknown codes vanish.
  }
  return lines;
}

}  // namespace dxfimport
