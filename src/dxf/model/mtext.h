#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dxfimport {

// How a piece of text is formatted: what the inline codes of MTEXT change.
struct TextFormat {
  std::string face;     // \f or \F: a family ("" the style's face)
  bool stroke = false;  // \F of an SHX font (drawn in a face that stands in for it)
  bool bold = false, italic = false;
  double height = 1;                                         // \H: relative to the text's height
  double widthFactor = 1;                                    // \W
  double oblique = 0;                                        // \Q, degrees
  double tracking = 1;                                       // \T: the spacing between characters
  int32_t color = 0;                                         // \C or \c: a colour value; 0 the text's own
  bool underline = false, overline = false, strike = false;  // \L \O \K
  int8_t align = 0;                                          // \A: 0 bottom, 1 centre, 2 top of the line
};

// A word (no breakable space in it), a breakable space, a tab, or a stacked fraction.
struct TextPiece {
  enum class Kind : uint8_t { Word, Space, Tab, Stack };
  Kind kind = Kind::Word;
  std::string text;   // the word, or the upper part of a stack
  std::string lower;  // the lower part of a stack
  char stack = 0;     // '/' a fraction bar, '#' a diagonal bar, '^' no bar
  TextFormat format;
};

// A paragraph (\P ends one) with its properties (\p...;).
struct TextParagraph {
  std::vector<TextPiece> pieces;
  double indentFirst = 0, indentLeft = 0, indentRight = 0;  // \pi \pl \pr, in text heights
  std::vector<double> tabs;                                 // \pt, in text heights
  int8_t alignment = -1;     // \pq: 0 left, 1 centre, 2 right, 3 justified; -1 the attachment's
  bool columnBreak = false;  // \N: it starts the next column
};

// Parses MTEXT content: paragraphs of words, spaces, tabs and stacks with their formats,
// {} groups restoring the format they started with. `height` is the text's height, for
// absolute \H values. Also takes the caret codes (^J a line break, ^I a tab, "^ " a caret,
// others a control character, which is not drawn) and the %% codes of TrueType texts
// (%%c %%d %%p the diameter, degree and plus-minus signs, %%% a percent sign, %%nnn a
// character by its number). Unknown codes vanish.
std::vector<TextParagraph> ParseMText(std::string_view content, double height);

// The markup of a TEXT or ATTRIB value: its characters taken literally, the %% codes
// resolved (%%u and %%o toggle underline and overline), the caret codes too.
std::string TextMarkup(std::string_view value);

// The plain characters of markup (paragraphs on lines of their own), for messages, tables
// and size estimates.
std::string PlainText(std::string_view content);

}  // namespace dxfimport
