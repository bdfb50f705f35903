#pragma once

#include <string>
#include <vector>

#include "dxf/model/drawing.h"
#include "dxf/model/load_report.h"
#include "support/numbers.h"

namespace dxfimport {

// The load summary, one entry per line: the heading, a blank line, the counts, a blank
// line and the extents. "Polylines" counts polyline segments and "Entities" draw-sequence
// entries (a 3DFACE counts four), as the summary always has.
std::vector<std::string> StatsLines(const Drawing& drawing, const std::string& heading,
                                    const NumberSeparators& sep = LocaleSeparators());

// Shows the summary in an information message box (with the load report's lines after
// it, when there is one).
void DisplayStats(const Drawing& drawing, const std::string& heading, const LoadReport* report = nullptr,
                  const std::vector<std::string>& more = {});

// The same figures as one JSON object; with a load report, "report" holds its entries as
// {"kind", "count", "line"} and "loadedCleanly" says whether there are none.
std::string StatsJson(const Drawing& drawing, const std::string& heading, const LoadReport* report = nullptr);

}  // namespace dxfimport
