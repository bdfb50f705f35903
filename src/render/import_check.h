#pragma once

#include <string>
#include <vector>

#include "dxf/input/load_context.h"
#include "dxf/model/drawing.h"
#include "geo/georeference.h"

namespace dxfimport {

// Whether a drawing will serve a host as a background picture, and why: one verdict
// and its reasons. Warnings make a drawing "fit with warnings"; a problem makes it "not
// fit"; notes only inform.
struct ImportCheck {
  enum class Level { Note, Warning, Problem };
  struct Reason {
    Level level;
    std::string text;
  };
  std::vector<Reason> Reasons;

  // "fit as background", "fit with warnings" or "not fit".
  std::string Verdict() const;
  // "Import check: VERDICT", then a line per reason.
  std::vector<std::string> Lines() const;
  // {"verdict":..,"reasons":[{"level":"warning","text":..},..]}
  std::string Json() const;
};

// The check of a loaded drawing (modern profile): its units, whether there is anything to
// draw and where, what its load report says is missing or not drawn, its fonts (on this
// machine) and whether its coordinate reference system is known.
ImportCheck CheckImport(const Drawing& drawing, const LoadOutcome& outcome, const Georeference& geo);

}  // namespace dxfimport
