#pragma once

#include "dxf/model/drawing.h"
#include "dxf/model/geometry.h"

namespace dxfimport {

// The box a row covers when drawn (modern profile), in drawing units: a segment's ends
// (and its arc, and half its width), an arc's or ellipse's curve, a solid's or hatch's
// corners, a text's box estimated from its height and length. A ray or construction line
// has no box (it reaches every view).
Box RowBox(const LineEntity& r);
Box RowBox(const PolySegment& r);
Box RowBox(const TextEntity& r);
Box RowBox(const AttribEntity& r);
Box RowBox(const ArcEntity& r);
Box RowBox(const EllipseEntity& r);
Box RowBox(const SolidEntity& r);
Box RowBox(const HatchEntity& r);
Box RowBox(const PointEntity& r);
Box RowBox(const RayEntity& r);
Box RowBox(const MTextEntity& r);
Box RowBox(const ImageEntity& r);

// The four corners of a text's box (baseline left first, counter-clockwise), estimated
// from its height, its characters and its width factor.
void TextCorners(const TextEntity& t, PointD corners[4]);

// The advance of a text in text heights, estimated for the faces texts are drawn in.
double TextAdvance(std::string_view utf8);

// The box of everything in the tables; empty when they hold nothing with a box.
Box TablesBox(const EntityTables& t);

// The extents of a drawing read with the modern profile: the box of what it draws with a
// small margin (2 % of its size on each side).
Box WithMargin(const Box& box);

}  // namespace dxfimport
