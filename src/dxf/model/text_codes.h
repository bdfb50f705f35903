#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

// What a "%%" control sequence's code character stands for: c diameter sign, d degree
// sign, p plus-minus sign, u the underline marker "U"; any other code vanishes ("").
std::string SpecialChar(std::u32string_view code);

// Every double quote replaced by two apostrophes.
std::string ReplaceQuote(std::string_view text);

struct ControlCodeResult {
  std::string Text;
  bool Underline = false;
};

// Resolves the "%%" sequences of a text, leftmost first, until none is left. A %%u (or
// %%U) sets the underline and drops the first three characters of the text, wherever the
// sequence stood (it is expected at the start); any other sequence is replaced by its
// SpecialChar. Only the first kScanLimit characters are taken: stored texts hold 100.
ControlCodeResult ApplyControlCodes(std::string_view utf8);

inline constexpr std::size_t kControlCodeScanLimit = 4096;

}  // namespace dxfimport
