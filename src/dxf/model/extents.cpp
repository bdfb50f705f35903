#include "dxf/model/extents.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "dxf/model/mtext.h"

namespace dxfimport {
namespace {

// Advances of the printable ASCII characters in thousandths of a text height (the height
// of a capital) in the Arial-compatible face that texts are drawn in by default; other
// characters take a typical Latin advance, and the ideographic scripts a full em.
constexpr int16_t kAdvances[95] = {
    404,  404,  516,  808,  808,  1292, 969, 277,  484,  484, 566, 849, 404, 484,  404,  404,
    808,  808,  808,  808,  808,  808,  808, 808,  808,  808, 404, 404, 849, 849,  849,  808,
    1476, 969,  969,  1050, 1050, 969,  888, 1131, 1050, 404, 727, 969, 808, 1211, 1050, 1131,
    969,  1131, 1050, 969,  888,  1050, 969, 1372, 969,  969, 888, 404, 404, 404,  682,  808,
    484,  808,  808,  727,  808,  808,  404, 808,  808,  323, 323, 727, 323, 1211, 808,  808,
    808,  808,  484,  727,  404,  808,  727, 1050, 727,  727, 727, 485, 378, 485,  849};
constexpr double kLatinAdvance = 0.85, kWideAdvance = 1.45;
constexpr double kDescent = 0.31;

}  // namespace

double TextAdvance(std::string_view utf8) {
  double width = 0;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto c = static_cast<unsigned char>(utf8[i]);
    if (c < 0x80) {
      width += c >= 32 && c < 127 ? kAdvances[c - 32] / 1000.0 : 0;
      ++i;
      continue;
    }
    const std::size_t length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
    // Three-byte sequences from U+2E80 on (E2 BA 80) are the wide scripts.
    const bool wide =
        length >= 3 &&
        (c > 0xE2 || (c == 0xE2 && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) >= 0xBA));
    width += wide ? kWideAdvance : kLatinAdvance;
    i += length;
  }
  return width;
}

namespace {

// Corners of a box in a text's frame (x along the baseline from the anchor, y up), turned
// by `rotation` degrees and mirrored as `mirror` says, about the anchor.
void FrameCorners(double x, double y, double rotation, int32_t mirror, double left, double right,
                  double bottom, double top, PointD corners[4]) {
  const double turn = Radians(rotation), c = std::cos(turn), s = std::sin(turn);
  const PointD local[4] = {{left, bottom}, {right, bottom}, {right, top}, {left, top}};
  for (int i = 0; i < 4; ++i) {
    const double lx = (mirror & kTextBackward) ? -local[i].x : local[i].x;
    const double ly = (mirror & kTextUpsideDown) ? -local[i].y : local[i].y;
    corners[i] = {x + lx * c - ly * s, y + lx * s + ly * c};
  }
}

Box Of(std::initializer_list<PointD> points) {
  Box b;
  for (const PointD& p : points) b.Add(p);
  return b;
}

Box Grown(Box b, double by) {
  if (b.Empty() || !(by > 0)) return b;
  return {b.minX - by, b.minY - by, b.maxX + by, b.maxY + by};
}

}  // namespace

Box RowBox(const LineEntity& r) { return Of({{r.X1, r.Y1}, {r.X2, r.Y2}}); }

Box RowBox(const PolySegment& r) {
  Box b = Of({{r.X1, r.Y1}, {r.X2, r.Y2}});
  BulgeArc arc;
  if (r.Bulge != 0 && ArcOfBulge({r.X1, r.Y1}, {r.X2, r.Y2}, r.Bulge, arc))
    b.Merge(ArcBox(arc.centre, arc.radius, arc.startDegrees, arc.endDegrees));
  return Grown(b, std::max(std::abs(r.Width), std::abs(r.EndWidth)) / 2);
}

void TextCorners(const TextEntity& t, PointD corners[4]) {
  double h = std::abs(t.Height), rotation = t.Rotation;
  double width = TextAdvance(PlainText(t.Text)) * h * (t.WidthFactor > 0 ? t.WidthFactor : 1);
  const bool twoPoints = t.HorzJustify == 3 || t.HorzJustify == 5;
  if (twoPoints && (t.AlignX != t.X || t.AlignY != t.Y)) {
    // An aligned or fitted text fills the line between its points.
    const double span = std::hypot(t.AlignX - t.X, t.AlignY - t.Y);
    if (t.HorzJustify == 3 && width > 0) h *= span / width;
    width = span;
    rotation = Degrees(std::atan2(t.AlignY - t.Y, t.AlignX - t.X));
  }
  const double along = t.HorzJustify == 1 || t.HorzJustify == 4 ? 0.5 : t.HorzJustify == 2 ? 1.0 : 0.0;
  double bottom = -kDescent * h, top = h;
  switch (t.VertJustify) {
    case 1:
      bottom += kDescent * h, top += kDescent * h;
      break;
    case 2:
      bottom -= h / 2, top -= h / 2;
      break;
    case 3:
      bottom -= h, top -= h;
      break;
    default:
      break;
  }
  if (t.HorzJustify == 4 && t.VertJustify == 0) bottom -= h / 2, top -= h / 2;
  const double left = -along * width;
  FrameCorners(t.X, t.Y, rotation, t.Mirror, left, left + width, bottom, top, corners);
}

Box RowBox(const TextEntity& r) {
  PointD c[4];
  TextCorners(r, c);
  return Of({c[0], c[1], c[2], c[3]});
}

Box RowBox(const AttribEntity& r) { return RowBox(r.Text); }

Box RowBox(const ArcEntity& r) { return ArcBox({r.CenterX, r.CenterY}, r.Radius, r.StartAngle, r.EndAngle); }

Box RowBox(const EllipseEntity& r) {
  return EllipseBox({r.CenterX, r.CenterY}, {r.UX, r.UY}, {r.VX, r.VY}, r.Start, r.End);
}

Box RowBox(const SolidEntity& r) { return Of({{r.X1, r.Y1}, {r.X2, r.Y2}, {r.X3, r.Y3}, {r.X4, r.Y4}}); }

Box RowBox(const HatchEntity& r) {
  Box b;
  for (const PointD& p : r.Points) b.Add(p);
  return b;
}

Box RowBox(const PointEntity& r) { return Of({{r.X, r.Y}}); }

Box RowBox(const RayEntity&) { return {}; }

// An MTEXT's box estimated from its paragraphs, wrapped at its reference width.
Box RowBox(const ImageEntity& r) {
  if (!r.Clip.empty() && !r.ClipInverted) {
    Box b;
    for (const PointD& p : r.Clip) b.Add(p);
    return b;
  }
  if (r.Width == PointD{} && r.Height == PointD{}) return {};  // an underlay without a known page
  return Of({r.Origin, r.Origin + r.Width, r.Origin + r.Height, r.Origin + r.Width + r.Height});
}

Box RowBox(const MTextEntity& m) {
  const double h = std::abs(m.Height);
  int lines = 0;
  double widest = 0;
  for (const TextParagraph& paragraph : ParseMText(m.Content, h)) {
    double x = 0;
    for (const TextPiece& piece : paragraph.pieces) {
      const double size = h * piece.format.height * piece.format.widthFactor;
      const double w = piece.kind == TextPiece::Kind::Stack
                           ? std::max(TextAdvance(piece.text), TextAdvance(piece.lower)) * size * 0.7
                       : piece.kind == TextPiece::Kind::Tab ? 4 * h
                                                            : TextAdvance(piece.text) * size;
      if (m.Width > 0 && x > 0 && x + w > m.Width && piece.kind != TextPiece::Kind::Space) {
        ++lines;
        widest = std::max(widest, x);
        x = 0;
      }
      x += w;
    }
    ++lines;
    widest = std::max(widest, x);
  }
  const double width = m.Width > 0 ? std::max(m.Width, widest) : widest;
  const double height = h + (lines - 1) * h * 5.0 / 3.0 * m.SpacingFactor + kDescent * h;
  const int column = (m.Attachment - 1) % 3, row = (m.Attachment - 1) / 3;
  const double left = -column * width / 2, top = row == 0 ? 0 : row == 1 ? height / 2 : height;
  PointD c[4];
  FrameCorners(m.X, m.Y, m.Rotation, m.Mirror, left, left + width, top - height, top, c);
  return Of({c[0], c[1], c[2], c[3]});
}

Box TablesBox(const EntityTables& t) {
  Box box;
  auto widen = [&box](const auto& table) {
    for (const auto& row : table) {
      const Box b = RowBox(row);
      if (std::isfinite(b.minX) && std::isfinite(b.minY) && std::isfinite(b.maxX) && std::isfinite(b.maxY))
        box.Merge(b);
    }
  };
  widen(t.Lines);
  widen(t.PolySegs);
  widen(t.Texts);
  widen(t.Attribs);
  widen(t.Arcs);
  widen(t.Ellipses);
  widen(t.Solids);
  widen(t.Hatches);
  widen(t.Points);
  widen(t.MTexts);
  widen(t.Images);
  return box;
}

Box WithMargin(const Box& box) {
  if (box.Empty()) return box;
  const double span = std::max(box.maxX - box.minX, box.maxY - box.minY);
  return Grown(box, span > 0 ? span * 0.02 : 1.0);
}

}  // namespace dxfimport
