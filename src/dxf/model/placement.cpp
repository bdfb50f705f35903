#include "dxf/model/placement.h"

#include <cmath>

namespace dxfimport {
namespace {

void Map(const Affine& m, double& x, double& y) {
  PointD p = m.Apply({x, y});
  x = p.x, y = p.y;
}

EllipseEntity EllipseOfArc(PointD centre, double radius, double startDegrees, double endDegrees, bool whole) {
  EllipseEntity e;
  e.CenterX = centre.x, e.CenterY = centre.y;
  e.UX = radius, e.VY = radius;
  const Sweep sweep = whole ? Sweep{} : SweepOf(Radians(startDegrees), Radians(endDegrees));
  e.Start = sweep.start, e.End = sweep.end;
  return e;
}

}  // namespace

LineEntity Placed(const LineEntity& row, const Affine& m) {
  LineEntity r = row;
  Map(m, r.X1, r.Y1);
  Map(m, r.X2, r.Y2);
  return r;
}

namespace {

// How a text's frame maps: the angle of its mapped baseline, how much longer the
// baseline and its height become, and whether the map mirrors it.
struct TextFrame {
  double rotation, along, across;
  bool mirrored;
};

TextFrame MapTextFrame(double rotation, const Affine& m) {
  const double t = Radians(rotation);
  const PointD along = m.ApplyVector({std::cos(t), std::sin(t)});
  const double length = Length(along), det = m.Det();
  if (!(length > 0)) return {rotation, 1, 1, false};
  return {Degrees(std::atan2(along.y, along.x)), length, std::abs(det) / length, det < 0};
}

}  // namespace

// A mirroring map turns the text upside down about its baseline along the mapped
// direction; a map that stretches the baseline more than the height widens the glyphs.
TextEntity Placed(const TextEntity& row, const Affine& m) {
  TextEntity r = row;
  Map(m, r.X, r.Y);
  Map(m, r.AlignX, r.AlignY);
  const TextFrame f = MapTextFrame(row.Rotation, m);
  r.Rotation = f.rotation;
  r.Height = row.Height * f.across;
  r.WidthFactor = row.WidthFactor * f.along / f.across;
  if (f.mirrored) r.Mirror ^= kTextUpsideDown;
  return r;
}

MTextEntity Placed(const MTextEntity& row, const Affine& m) {
  MTextEntity r = row;
  Map(m, r.X, r.Y);
  const TextFrame f = MapTextFrame(row.Rotation, m);
  r.Rotation = f.rotation;
  r.Height = row.Height * f.across;
  r.Width = row.Width * f.along;
  r.ColumnWidth = row.ColumnWidth * f.along;
  r.ColumnGutter = row.ColumnGutter * f.along;
  r.ColumnHeight = row.ColumnHeight * f.across;
  if (f.mirrored) r.Mirror ^= kTextUpsideDown;
  return r;
}

AttribEntity Placed(const AttribEntity& row, const Affine& m) {
  AttribEntity r = row;
  r.Text = Placed(row.Text, m);
  return r;
}

SolidEntity Placed(const SolidEntity& row, const Affine& m) {
  SolidEntity r = row;
  Map(m, r.X1, r.Y1);
  Map(m, r.X2, r.Y2);
  Map(m, r.X3, r.Y3);
  Map(m, r.X4, r.Y4);
  return r;
}

HatchEntity Placed(const HatchEntity& row, const Affine& m) {
  HatchEntity r = row;
  for (PointD& p : r.Points) p = m.Apply(p);
  for (PatternLine& line : r.Pattern) {
    line.Base = m.Apply(line.Base);
    line.Direction = m.ApplyVector(line.Direction);
    line.Offset = m.ApplyVector(line.Offset);
  }
  r.Gradient.Direction = m.ApplyVector(row.Gradient.Direction);
  return r;
}

ImageEntity Placed(const ImageEntity& row, const Affine& m) {
  ImageEntity r = row;
  r.Origin = m.Apply(row.Origin);
  r.Width = m.ApplyVector(row.Width);
  r.Height = m.ApplyVector(row.Height);
  for (PointD& p : r.Clip) p = m.Apply(p);
  return r;
}

EllipseEntity Placed(const EllipseEntity& row, const Affine& m) {
  EllipseEntity r = row;
  Map(m, r.CenterX, r.CenterY);
  const PointD u = m.ApplyVector({row.UX, row.UY}), v = m.ApplyVector({row.VX, row.VY});
  r.UX = u.x, r.UY = u.y, r.VX = v.x, r.VY = v.y;
  return r;
}

PointEntity Placed(const PointEntity& row, const Affine& m) {
  PointEntity r = row;
  Map(m, r.X, r.Y);
  return r;
}

RayEntity Placed(const RayEntity& row, const Affine& m) {
  RayEntity r = row;
  Map(m, r.X, r.Y);
  const PointD d = m.ApplyVector({row.DX, row.DY});
  r.DX = d.x, r.DY = d.y;
  return r;
}

InsertRef Placed(const InsertRef& row, const Affine& m) {
  InsertRef r = row;
  r.Frame = m * row.Frame;
  return r;
}

bool PlaceArc(const ArcEntity& row, const Affine& m, ArcEntity& arc, EllipseEntity& ellipse) {
  const bool whole = row.StartAngle == row.EndAngle;
  if (m.IsSimilarity()) {
    arc = row;
    Map(m, arc.CenterX, arc.CenterY);
    arc.Radius = row.Radius * m.Scale();
    if (!whole) {
      const bool mirrored = m.Det() < 0;
      arc.StartAngle = m.MapAngle(mirrored ? row.EndAngle : row.StartAngle);
      arc.EndAngle = m.MapAngle(mirrored ? row.StartAngle : row.EndAngle);
      if (arc.StartAngle == arc.EndAngle) arc.EndAngle += 360;
    }
    return true;
  }
  EllipseEntity e = EllipseOfArc({row.CenterX, row.CenterY}, row.Radius, row.StartAngle, row.EndAngle, whole);
  e.Layer = row.Layer, e.Color = row.Color, e.LineType = row.LineType, e.LineWeight = row.LineWeight;
  ellipse = Placed(e, m);
  return false;
}

bool PlaceSegment(const PolySegment& row, const Affine& m, std::vector<PolySegment>& segments,
                  EllipseEntity& ellipse) {
  BulgeArc a;
  if (row.Bulge == 0 || m.IsSimilarity() || !ArcOfBulge({row.X1, row.Y1}, {row.X2, row.Y2}, row.Bulge, a)) {
    PolySegment segment = row;
    Map(m, segment.X1, segment.Y1);
    Map(m, segment.X2, segment.Y2);
    segment.Width = row.Width * m.Scale();
    segment.EndWidth = row.EndWidth * m.Scale();
    if (m.Det() < 0) segment.Bulge = -row.Bulge;  // a mirror turns the arc the other way
    segments.push_back(segment);
    return true;
  }
  if (row.Width == 0 && row.EndWidth == 0) {
    EllipseEntity e = EllipseOfArc(a.centre, a.radius, a.startDegrees, a.endDegrees, false);
    e.Layer = row.Layer, e.Color = row.Color, e.LineType = row.LineType, e.LineWeight = row.LineWeight;
    ellipse = Placed(e, m);
    return false;
  }
  // A wide arc that the map distorts: chords of at most 6 degrees, widths in between.
  const double a0 = std::atan2(row.Y1 - a.centre.y, row.X1 - a.centre.x);
  const double sweep = 4 * std::atan(row.Bulge);
  const int chords = std::max(2, int(std::ceil(std::abs(sweep) / Radians(6))));
  PolySegment piece = row;
  piece.Bulge = 0;
  PointD from = m.Apply({row.X1, row.Y1});
  for (int i = 1; i <= chords; ++i) {
    const double f = double(i) / chords, t = a0 + sweep * f;
    const PointD to = i == chords ? m.Apply({row.X2, row.Y2})
                                  : m.Apply(a.centre + PointD{std::cos(t), std::sin(t)} * a.radius);
    piece.X1 = from.x, piece.Y1 = from.y, piece.X2 = to.x, piece.Y2 = to.y;
    piece.Width = (row.Width + (row.EndWidth - row.Width) * (f - 1.0 / chords)) * m.Scale();
    piece.EndWidth = (row.Width + (row.EndWidth - row.Width) * f) * m.Scale();
    piece.Joined = i > 1 || row.Joined;
    segments.push_back(piece);
    from = to;
  }
  return true;
}

}  // namespace dxfimport
