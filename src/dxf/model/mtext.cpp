#include "dxf/model/mtext.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "dxf/model/colors.h"
#include "support/numbers.h"

namespace dxfimport {
namespace {

// The signs of the %% codes.
std::string PercentSign(char code) {
  switch (std::tolower(static_cast<unsigned char>(code))) {
    case 'c':
      return "\u00D8";
    case 'd':
      return "\u00B0";
    case 'p':
      return "\u00B1";
    case '%':
      return "%";
    default:
      return "";
  }
}

// UTF-8 of a code point.
std::string Utf8(uint32_t c) {
  std::string out;
  if (c < 0x80) {
    out += char(c);
  } else if (c < 0x800) {
    out += char(0xC0 | (c >> 6)), out += char(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += char(0xE0 | (c >> 12)), out += char(0x80 | ((c >> 6) & 0x3F)), out += char(0x80 | (c & 0x3F));
  } else {
    out += char(0xF0 | (c >> 18)), out += char(0x80 | ((c >> 12) & 0x3F));
    out += char(0x80 | ((c >> 6) & 0x3F)), out += char(0x80 | (c & 0x3F));
  }
  return out;
}

// Whether a UTF-8 sequence starting with `lead` (three bytes and more) is in the
// ideographic scripts, where a line may break between any two characters.
bool BreaksAnywhere(std::string_view s, std::size_t at) {
  const auto c = static_cast<unsigned char>(s[at]);
  if (c < 0xE2) return false;
  if (c > 0xE2 && c < 0xF0) return true;
  return c == 0xE2 && at + 1 < s.size() && static_cast<unsigned char>(s[at + 1]) >= 0xBA;
}

// The range a relative height (\H) is held in: beyond it no character of the text and
// its neighbours could show together.
constexpr double kSmallestFactor = 1e-4, kLargestFactor = 1e4;

class Parser {
 public:
  Parser(std::string_view s, double height) : s_(s), height_(height) { out_.emplace_back(); }

  std::vector<TextParagraph> Parse();

 private:
  void Flush();
  void Piece(TextPiece::Kind kind);
  void Paragraph(bool columnBreak);
  bool Caret();
  bool Percent();
  void Code();
  std::string_view Argument();
  void ParagraphProperties(std::string_view argument);
  void Stack();
  void Character(std::size_t length) {
    word_.append(s_.substr(i_, length));
    i_ += length;
  }

  std::string_view s_;
  std::size_t i_ = 0;
  double height_;
  std::vector<TextParagraph> out_;
  TextFormat format_;
  std::vector<TextFormat> groups_;
  TextParagraph properties_;  // the paragraph properties that new paragraphs take
  std::string word_;
};

void Parser::Flush() {
  if (word_.empty()) return;
  TextPiece piece;
  piece.text = std::move(word_);
  piece.format = format_;
  out_.back().pieces.push_back(std::move(piece));
  word_.clear();
}

void Parser::Piece(TextPiece::Kind kind) {
  Flush();
  TextPiece piece;
  piece.kind = kind;
  piece.text = kind == TextPiece::Kind::Space ? " " : "";
  piece.format = format_;
  out_.back().pieces.push_back(std::move(piece));
}

void Parser::Paragraph(bool columnBreak) {
  Flush();
  TextParagraph next = properties_;
  next.pieces.clear();
  next.columnBreak = columnBreak;
  out_.push_back(std::move(next));
}

// ^X: the control character X - 64 (a tab, a line break, or nothing drawn), ^? the
// delete character; "^ " a caret.
bool Parser::Caret() {
  if (i_ + 1 >= s_.size()) return false;
  const int c = static_cast<unsigned char>(s_[i_ + 1]);
  if (c >= 0x80) return false;
  const int code = c == '?' ? 0x7F : ((c - 64) % 126 + 126) % 126;
  i_ += 2;
  if (code == '\t')
    Piece(TextPiece::Kind::Tab);
  else if (code == '\n')
    Paragraph(false);
  else if (code >= 32 && code != 0x7F)
    word_ += char(code);
  return true;
}

// %%c, %%d, %%p, %%%, %%nnn; %%u and %%o toggle underline and overline.
bool Parser::Percent() {
  if (i_ + 2 >= s_.size() || s_[i_ + 1] != '%') return false;
  const char code = s_[i_ + 2];
  if (std::isdigit(static_cast<unsigned char>(code))) {
    std::size_t end = i_ + 2;
    while (end < s_.size() && end < i_ + 5 && std::isdigit(static_cast<unsigned char>(s_[end]))) ++end;
    int number = 0;
    std::from_chars(s_.data() + i_ + 2, s_.data() + end, number);
    i_ = end;
    if (number >= 32 && number != 127) word_ += Utf8(uint32_t(number));  // control characters are not drawn
    return true;
  }
  i_ += 3;
  const char lower = char(std::tolower(static_cast<unsigned char>(code)));
  if (lower == 'u' || lower == 'o') {
    Flush();
    (lower == 'u' ? format_.underline : format_.overline) ^= true;
  } else {
    word_ += PercentSign(code);
  }
  return true;
}

std::string_view Parser::Argument() {
  std::size_t end = s_.find(';', i_);
  if (end == std::string_view::npos) end = s_.size();
  std::string_view argument = s_.substr(i_, end - i_);
  i_ = std::min(end + 1, s_.size());
  return argument;
}

// \p...; : i first-line indent, l left, r right, q alignment, t tab stops; * resets.
void Parser::ParagraphProperties(std::string_view a) {
  TextParagraph& p = properties_;
  std::size_t k = 0;
  auto number = [&](double& target) {
    if (k < a.size() && a[k] == '*') {
      target = 0, ++k;
      return;
    }
    std::size_t end = k;
    while (end < a.size() && a[end] != ',' && !std::isalpha(static_cast<unsigned char>(a[end]))) ++end;
    target = HeldVal(a.substr(k, end - k));
    k = end;
  };
  while (k < a.size()) {
    const char c = a[k++];
    switch (c) {
      case 'i':
        number(p.indentFirst);
        break;
      case 'l':
        number(p.indentLeft);
        break;
      case 'r':
        number(p.indentRight);
        break;
      case 'q': {
        const char q = k < a.size() ? a[k++] : '*';
        p.alignment = q == 'l' ? 0 : q == 'c' ? 1 : q == 'r' ? 2 : (q == 'j' || q == 'd') ? 3 : -1;
        break;
      }
      case 't': {
        p.tabs.clear();
        while (k < a.size() && a[k] != 'i' && a[k] != 'l' && a[k] != 'r' && a[k] != 'q') {
          // Commas, the kinds of stop (c centred, r right) and any other letter are passed
          // over: each turn of this loop takes at least one character.
          if (!std::isdigit(static_cast<unsigned char>(a[k])) && a[k] != '.' && a[k] != '-' && a[k] != '+' &&
              a[k] != '*') {
            ++k;
            continue;
          }
          double stop = 0;
          const std::size_t before = k;
          number(stop);
          if (k == before) ++k;
          if (stop > 0) p.tabs.push_back(stop);
          if (k < a.size() && a[k] == ',') ++k;
        }
        break;
      }
      default:
        break;  // x, commas
    }
  }
  TextParagraph& current = out_.back();
  current.indentFirst = p.indentFirst, current.indentLeft = p.indentLeft, current.indentRight = p.indentRight;
  current.alignment = p.alignment, current.tabs = p.tabs;
}

// \Supper^lower; \Supper/lower; \Supper#lower; (a backslash keeps the next character).
void Parser::Stack() {
  Flush();
  TextPiece piece;
  piece.kind = TextPiece::Kind::Stack;
  piece.format = format_;
  std::string* part = &piece.text;
  for (; i_ < s_.size() && s_[i_] != ';'; ++i_) {
    const char c = s_[i_];
    if (c == '\\' && i_ + 1 < s_.size()) {
      *part += s_[++i_];
    } else if ((c == '^' || c == '/' || c == '#') && part == &piece.text) {
      piece.stack = c;
      part = &piece.lower;
    } else {
      *part += c;
    }
  }
  if (i_ < s_.size()) ++i_;
  while (!piece.lower.empty() && piece.lower.front() == ' ') piece.lower.erase(0, 1);
  if (!piece.stack) piece.stack = '^';
  out_.back().pieces.push_back(std::move(piece));
}

void Parser::Code() {
  const char code = s_[i_ + 1];
  i_ += 2;
  auto factor = [](std::string_view a, double current) {
    const bool relative = !a.empty() && (a.back() == 'x' || a.back() == 'X');
    const double v = HeldVal(a);
    return relative ? current * v : v;
  };
  switch (code) {
    case 'P':
      Paragraph(false);
      break;
    case 'N':
      Paragraph(true);
      break;
    case 'X':
      Paragraph(false);
      break;
    case '~':
      word_ += "\u00A0";
      break;
    case '\\':
    case '{':
    case '}':
      word_ += code;
      break;
    case 'L':
    case 'l':
      Flush();
      format_.underline = code == 'L';
      break;
    case 'O':
    case 'o':
      Flush();
      format_.overline = code == 'O';
      break;
    case 'K':
    case 'k':
      Flush();
      format_.strike = code == 'K';
      break;
    case 'H': {
      Flush();
      std::string_view a = Argument();
      const bool relative = !a.empty() && (a.back() == 'x' || a.back() == 'X');
      const double v = HeldVal(a);
      if (v > 0)
        format_.height = relative ? format_.height * v : (height_ > 0 ? v / height_ : format_.height);
      format_.height = std::clamp(format_.height, kSmallestFactor, kLargestFactor);
      break;
    }
    case 'W':
      Flush(), format_.widthFactor = std::clamp(factor(Argument(), format_.widthFactor), 0.01, 100.0);
      break;
    case 'Q':
      Flush(), format_.oblique = std::clamp(HeldVal(Argument()), -85.0, 85.0);
      break;
    case 'T':
      Flush(), format_.tracking = std::clamp(factor(Argument(), format_.tracking), 0.75, 4.0);
      break;
    case 'A':
      Flush(), format_.align = int8_t(HeldWhole(HeldVal(Argument()), 0, 2));
      break;
    case 'C': {
      Flush();
      const auto number = HeldWhole(HeldVal(Argument()), 0, 256);
      format_.color = number <= 0 || number >= 256 ? 0 : AciColor(int(number));
      break;
    }
    case 'c': {
      Flush();
      const auto bgr = int32_t(HeldWhole(HeldVal(Argument()), 0, 0xFFFFFF));
      format_.color = bgr == 0 ? kExplicitBlack : bgr;
      break;
    }
    case 'f':
    case 'F': {
      Flush();
      std::string_view a = Argument();
      const std::size_t bar = a.find('|');
      format_.face = std::string(a.substr(0, bar));
      format_.stroke = code == 'F' || format_.face.ends_with(".shx") || format_.face.ends_with(".SHX");
      format_.bold = a.find("|b1") != std::string_view::npos;
      format_.italic = a.find("|i1") != std::string_view::npos;
      break;
    }
    case 'p':
      ParagraphProperties(Argument());
      break;
    case 'S':
      Stack();
      break;
    default:
      word_ += '\\', word_ += code;
      break;  // not a code: the backslash is text
  }
}

std::vector<TextParagraph> Parser::Parse() {
  while (i_ < s_.size()) {
    const char c = s_[i_];
    if (c == '^' && Caret()) continue;
    if (c == '%' && Percent()) continue;
    if (c == '\\' && i_ + 1 < s_.size()) {
      Code();
      continue;
    }
    if (c == '{') {
      groups_.push_back(format_);
      ++i_;
      continue;
    }
    if (c == '}') {
      Flush();
      if (!groups_.empty()) format_ = groups_.back(), groups_.pop_back();
      ++i_;
      continue;
    }
    if (c == ' ') {
      Piece(TextPiece::Kind::Space);
      ++i_;
      continue;
    }
    if (c == '\t') {
      Piece(TextPiece::Kind::Tab);
      ++i_;
      continue;
    }
    const auto lead = static_cast<unsigned char>(c);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    if (BreaksAnywhere(s_, i_)) {
      Flush();
      Character(std::min(length, s_.size() - i_));
      Flush();
      continue;
    }
    if (lead < 32) {
      ++i_;  // a control character is not drawn
      continue;
    }
    Character(std::min(length, s_.size() - i_));
  }
  Flush();
  return std::move(out_);
}

}  // namespace

std::vector<TextParagraph> ParseMText(std::string_view content, double height) {
  return Parser(content, height).Parse();
}

std::string TextMarkup(std::string_view value) {
  std::string out;
  out.reserve(value.size() + 8);
  for (char c : value) {
    if (c == '\\' || c == '{' || c == '}') out += '\\';
    out += c;
  }
  return out;
}

std::string PlainText(std::string_view content) {
  std::string out;
  for (const TextParagraph& p : ParseMText(content, 1)) {
    if (!out.empty()) out += '\n';
    for (const TextPiece& piece : p.pieces) {
      out += piece.text;
      if (piece.kind == TextPiece::Kind::Stack)
        out += std::string(1, piece.stack == '^' ? ' ' : '/') + piece.lower;
      if (piece.kind == TextPiece::Kind::Tab) out += '\t';
    }
  }
  return out;
}

}  // namespace dxfimport
