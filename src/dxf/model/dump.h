#pragma once

#include <ostream>

#include "dxf/model/drawing.h"

namespace dxfimport {

// Writes every non-empty table as tab-separated text: "# <table>", a header of field
// names, then one line per row. Floats with up to 9 significant digits; tabs inside
// texts are written as \t.
void DumpTables(const Drawing& drawing, std::ostream& out);

}  // namespace dxfimport
