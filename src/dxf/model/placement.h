#pragma once

#include <vector>

#include "dxf/model/geometry.h"
#include "dxf/model/records.h"

namespace dxfimport {

// Rows mapped by a plane affine map (modern profile): an object coordinate system, a
// block's base point, an insert's scale, rotation and position, or all of them composed.
// Sizes follow the map: widths and radii by its linear scale, text heights by the height
// of the mapped text box.
LineEntity Placed(const LineEntity& row, const Affine& m);
TextEntity Placed(const TextEntity& row, const Affine& m);
MTextEntity Placed(const MTextEntity& row, const Affine& m);
AttribEntity Placed(const AttribEntity& row, const Affine& m);
SolidEntity Placed(const SolidEntity& row, const Affine& m);
HatchEntity Placed(const HatchEntity& row, const Affine& m);
ImageEntity Placed(const ImageEntity& row, const Affine& m);
EllipseEntity Placed(const EllipseEntity& row, const Affine& m);
PointEntity Placed(const PointEntity& row, const Affine& m);
RayEntity Placed(const RayEntity& row, const Affine& m);
InsertRef Placed(const InsertRef& row, const Affine& m);

// A circle or arc stays one under a similarity (true, `arc` set) and becomes an elliptic
// arc otherwise (false, `ellipse` set). A circle is an arc whose two angles are equal.
bool PlaceArc(const ArcEntity& row, const Affine& m, ArcEntity& arc, EllipseEntity& ellipse);

// A straight segment, or a bulged one under a similarity, stays a segment; a bulged
// segment that the map distorts becomes an elliptic arc (false, `ellipse` set), or, when
// it has width, straight wide segments along that arc. True when `segments` holds the
// result.
bool PlaceSegment(const PolySegment& row, const Affine& m, std::vector<PolySegment>& segments,
                  EllipseEntity& ellipse);

// Calls `sink` with the mapped row (or the row that it became).
template <class Row, class Sink>
void PlaceInto(const Row& row, const Affine& m, Sink&& sink) {
  if (m.IsIdentity()) return sink(row);
  if constexpr (std::is_same_v<Row, ArcEntity>) {
    ArcEntity arc;
    EllipseEntity ellipse;
    if (PlaceArc(row, m, arc, ellipse))
      sink(arc);
    else
      sink(ellipse);
  } else if constexpr (std::is_same_v<Row, PolySegment>) {
    std::vector<PolySegment> segments;
    EllipseEntity ellipse;
    if (!PlaceSegment(row, m, segments, ellipse)) return sink(ellipse);
    for (const PolySegment& segment : segments) sink(segment);
  } else {
    sink(Placed(row, m));
  }
}

}  // namespace dxfimport
