#pragma once

#include <cstdint>
#include <vector>

#include "dxf/model/drawing.h"
#include "dxf/model/geometry.h"

namespace dxfimport {

// The outline of a polyline segment with width, in drawing units: a band from its start
// width to its end width, along its arc when it has a bulge. A straight band whose
// neighbour in the same polyline (row - 1 or row + 1 of the table, joined to it) is
// straight and wide meets that neighbour in a mitre, as CAD tools join wide polylines.
// An arc band takes as many chords as `pixelsPerUnit` (the picture's scale) makes it
// worth. Empty when there is nothing to fill (a straight segment of no length).
std::vector<PointD> WideBand(const Drawing& drawing, const PolySegment& s, int32_t row, double pixelsPerUnit);

}  // namespace dxfimport
