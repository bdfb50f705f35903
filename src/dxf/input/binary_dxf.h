#pragma once

#include <string>
#include <string_view>

#include "dxf/input/line_source.h"

namespace dxfimport {

// True when the bytes start with the binary DXF sentinel ("AutoCAD Binary DXF").
bool IsBinaryDxf(std::string_view bytes);

// Writes the pairs of a binary DXF file as the ASCII DXF they stand for (one code line
// and one value line each; numbers in full precision, binary chunks as hexadecimal).
// Reading stops at a group code whose value type is unknown or at a value cut off by the
// end of the file; what was converted before is kept. False when the bytes are not
// binary DXF.
bool BinaryToAscii(std::string_view bytes, std::string& text);

// Converts the source's binary file into `text` and reads from it from then on. False
// when it is not binary DXF.
bool ConvertBinaryDxf(LineSource& source, std::string& text);

}  // namespace dxfimport
