#include "dxf/model/dimension_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace dxfimport {
namespace {

PointD Unit(PointD v) {
  const double l = Length(v);
  return l > 0 ? v * (1 / l) : PointD{1, 0};
}

double Dot(PointD a, PointD b) { return a.x * b.x + a.y * b.y; }
PointD Perp(PointD v) { return {-v.y, v.x}; }

// A filled arrowhead with its tip at `tip`, pointing along `direction`.
std::array<PointD, 3> Arrow(PointD tip, PointD direction, double size) {
  const PointD d = Unit(direction), side = Perp(d) * (size / 6);
  const PointD back = tip - d * size;
  return {tip, back + side, back - side};
}

// The text of a dimension: the override, with "<>" standing for the measurement.
std::string TextOf(const DimensionInput& in, const std::string& measured) {
  if (in.text.empty()) return measured;
  std::string text = in.text;
  if (std::size_t at = text.find("<>"); at != std::string::npos) text.replace(at, 2, measured);
  return text == " " ? std::string() : text;
}

// Text above a line through `at` along `direction`, reading from left to right.
void PlaceText(DimensionPicture& p, PointD at, PointD direction, double height, double gap) {
  PointD d = Unit(direction);
  if (d.x < -1e-9 || (std::abs(d.x) <= 1e-9 && d.y < 0)) d = d * -1;
  p.textRotation = Degrees(std::atan2(d.y, d.x));
  p.textAt = at + Perp(d) * (gap + height / 2);
}

void Linear(const DimensionInput& in, const DimStyle& s, DimensionPicture& p) {
  const double k = s.scale;
  const double angle =
      in.type == 1 ? Degrees(std::atan2(in.p14.y - in.p13.y, in.p14.x - in.p13.x)) : in.rotation;
  const PointD dir{std::cos(Radians(angle)), std::sin(Radians(angle))};
  // The dimension line runs through 10 along the direction; each extension line from its
  // origin (13, 14) to the dimension line.
  const PointD a = in.p10 + dir * Dot(in.p13 - in.p10, dir), b = in.p10 + dir * Dot(in.p14 - in.p10, dir);
  for (const auto& [origin, foot] : {std::pair{in.p13, a}, std::pair{in.p14, b}}) {
    const PointD out = foot - origin;
    const double length = Length(out);
    if (length <= 0) continue;
    const PointD u = out * (1 / length);
    p.lines.push_back({origin + u * (s.extOffset * k), foot + u * (s.extExtend * k)});
  }
  p.lines.push_back({a, b});
  const double measured = std::abs(Dot(in.p14 - in.p13, dir));
  if (Length(b - a) > 0) {
    p.arrows.push_back(Arrow(a, a - b, s.arrowSize * k));
    p.arrows.push_back(Arrow(b, b - a, s.arrowSize * k));
  }
  p.text = TextOf(in, FormatMeasurement(measured, s.decimals));
  PlaceText(p, (a + b) * 0.5, dir, p.textHeight, s.gap * k);
}

void Radial(const DimensionInput& in, const DimStyle& s, DimensionPicture& p, bool diameter) {
  const double k = s.scale;
  // Radius: 10 is the centre, 15 the point on the curve. Diameter: 15 and 10 are the
  // two ends of the chord through the centre.
  const PointD onCurve = in.p15, other = in.p10;
  const PointD centre = diameter ? (onCurve + other) * 0.5 : other;
  const double radius = Length(onCurve - centre);
  p.lines.push_back({diameter ? other : centre, onCurve});
  p.arrows.push_back(Arrow(onCurve, onCurve - centre, s.arrowSize * k));
  if (diameter) p.arrows.push_back(Arrow(other, other - centre, s.arrowSize * k));
  // The sign goes before the measurement only when the dimension has no text of its own.
  const std::string measured = FormatMeasurement(diameter ? 2 * radius : radius, s.decimals);
  p.text = in.text.empty() ? (diameter ? "\xC3\x98" : "R") + measured : TextOf(in, measured);
  PlaceText(p, (centre + onCurve) * 0.5, onCurve - centre, p.textHeight, s.gap * k);
}

void Angular(const DimensionInput& in, const DimStyle& s, DimensionPicture& p) {
  const double k = s.scale;
  // Two lines (13-14 and 10-15) meeting at their intersection, or three points with the
  // vertex at 15; the arc runs through 16 (or 10).
  PointD vertex, first, second, onArc;
  if (in.type == 5) {
    vertex = in.p15, first = in.p13, second = in.p14, onArc = in.p10;
  } else {
    const PointD d1 = in.p14 - in.p13, d2 = in.p10 - in.p15;
    const double det = d1.x * d2.y - d1.y * d2.x;
    if (std::abs(det) < 1e-12) return;
    const double t = ((in.p15.x - in.p13.x) * d2.y - (in.p15.y - in.p13.y) * d2.x) / det;
    vertex = in.p13 + d1 * t, first = in.p14, second = in.p10, onArc = in.p16;
  }
  const double radius = Length(onArc - vertex);
  if (radius <= 0) return;
  double a1 = Degrees(std::atan2(first.y - vertex.y, first.x - vertex.x));
  double a2 = Degrees(std::atan2(second.y - vertex.y, second.x - vertex.x));
  double sweep = std::fmod(a2 - a1 + 720, 360);
  if (sweep > 180) std::swap(a1, a2), sweep = 360 - sweep;
  p.arcs.push_back({vertex, radius, a1, a1 + sweep});
  for (double a : {a1, a1 + sweep}) {
    const PointD u{std::cos(Radians(a)), std::sin(Radians(a))};
    const PointD end = vertex + u * radius;
    p.lines.push_back({vertex + u * std::max(0.0, std::min(Length(first - vertex), Length(second - vertex)) +
                                                      s.extOffset * k),
                       end + u * (s.extExtend * k)});
    const PointD tangent = a == a1 ? Perp(u) * -1 : Perp(u);
    p.arrows.push_back(Arrow(end, tangent, s.arrowSize * k));
  }
  p.text = TextOf(in, FormatMeasurement(sweep, std::min(s.decimals, 2)) + "\xC2\xB0");
  const double mid = Radians(a1 + sweep / 2);
  const PointD u{std::cos(mid), std::sin(mid)};
  PlaceText(p, vertex + u * radius, Perp(u), p.textHeight, s.gap * k);
}

void Ordinate(const DimensionInput& in, const DimStyle& s, DimensionPicture& p) {
  const double k = s.scale;
  p.lines.push_back({in.p13, in.p14});
  const double measured = in.ordinateX ? in.p13.x - in.p10.x : in.p13.y - in.p10.y;
  p.text = TextOf(in, FormatMeasurement(std::abs(measured), s.decimals));
  // The text beyond the leader's end, horizontal.
  const PointD along = Unit(in.p14 - in.p13);
  p.textAt = in.p14 + along * (s.gap * k + p.textHeight);
}

}  // namespace

std::string FormatMeasurement(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", std::clamp(decimals, 0, 8), value);
  std::string text = buffer;
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

DimensionPicture DrawDimension(const DimensionInput& input, const DimStyle& style) {
  DimensionPicture p;
  p.textHeight = style.textHeight * style.scale;
  switch (input.type) {
    case 0:
    case 1:
      Linear(input, style, p);
      break;
    case 2:
    case 5:
      Angular(input, style, p);
      break;
    case 3:
      Radial(input, style, p, true);
      break;
    case 4:
      Radial(input, style, p, false);
      break;
    case 6:
      Ordinate(input, style, p);
      break;
    default:
      break;
  }
  // A text placed by the user (70 bit 128) stands at 11.
  if (input.p11 != PointD{} && !p.text.empty() && input.type != 6) p.textAt = input.p11;
  return p;
}

}  // namespace dxfimport
