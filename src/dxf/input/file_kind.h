#pragma once

#include <string>
#include <string_view>

namespace dxfimport {

// Why a path cannot be a drawing to read, as one line for the user ("" when it may be
// one: a DXF file, ASCII or binary, a missing file, or something only the reader can
// judge). Looks at what the path is (a folder, an empty or unreadable file) and at the
// file's first bytes: a DWG file is named with its AutoCAD version, with the advice to
// save it as DXF; images, PDF and archives are named by kind.
std::string NotADrawing(const std::string& path);

// The same judgement over the first bytes of a file.
std::string KindOfBytes(std::string_view head);

}  // namespace dxfimport
