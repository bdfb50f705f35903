#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

// Text bytes from a drawing become UTF-8: valid UTF-8 is kept as it is, anything else is
// taken as Windows-1252 (the code page of the drawings this program was made for).
std::string DecodeText(std::string_view raw);

bool IsAscii(std::string_view text);
bool IsValidUtf8(std::string_view text);

// Number of characters (code points) in UTF-8 text.
std::size_t CharCount(std::string_view utf8);

// The first `count` characters of UTF-8 text (a fixed-length field's cut).
std::string_view CutChars(std::string_view utf8, std::size_t count);

// The text without trailing blanks: a fixed-length field keeps its value this way, since
// its blank padding cannot be told from trailing blanks of the value.
std::string_view TrimRight(std::string_view text);
// Without leading and trailing blanks (spaces only, as the run time's Trim).
std::string_view Trim(std::string_view text);
// Whether two names are equal when ASCII letters are compared without case, as CAD
// tools compare layer, style and block names.
bool SameName(std::string_view a, std::string_view b);

// The text blank-padded (or cut) to exactly `width` characters.
std::string PadToWidth(std::string_view utf8, std::size_t width);

std::u32string ToUtf32(std::string_view utf8);
std::string ToUtf8(std::u32string_view text);
void AppendUtf8(std::string& out, char32_t c);

}  // namespace dxfimport
