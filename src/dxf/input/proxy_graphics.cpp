// The proxy graphics stream: what a CAD tool saved for others to draw an entity whose
// class they do not know. Little-endian throughout; every command is a 32-bit size (its
// own 8 header bytes included) and a 32-bit type, then its data.
#include "dxf/input/proxy_graphics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "support/text_decode.h"

namespace dxfimport {
namespace {

enum Command : int32_t {
  kCircle = 2,
  kCircle3P = 3,
  kArc = 4,
  kArc3P = 5,
  kPolyline = 6,
  kPolygon = 7,
  kMesh = 8,
  kShell = 9,
  kText = 10,
  kText2 = 11,
  kColor = 14,
  kLayer = 16,
  kLineType = 18,
  kFill = 20,
  kTrueColor = 22,
  kLineWeight = 23,
  kPushTransform = 29,
  kPushTransform2 = 30,
  kPopTransform = 31,
  kPolylineWithNormals = 32,
  kLwPolyline = 33,
  kUnicodeText = 36,
  kUnicodeText2 = 38,
};

// Commands that set something no shape here depends on (extents, marker, line type
// scale, thickness, plot style, material, mapper): read and passed by without a count.
bool SetsNothingDrawn(int32_t type) {
  return type == 1 || type == 19 || type == 24 || type == 25 || type == 26 || type == 34 || type == 35;
}

struct V3 {
  double x = 0, y = 0, z = 0;
};
V3 operator-(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
V3 operator+(V3 a, V3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
V3 operator*(V3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }
double Dot(V3 a, V3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
V3 Cross(V3 a, V3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
double Norm(V3 a) { return std::sqrt(Dot(a, a)); }
bool Unit(V3& a) {
  const double n = Norm(a);
  if (!(n > 1e-300) || !std::isfinite(n)) return false;
  a = a * (1 / n);
  return true;
}

// The axes of a plane with normal `n` by the arbitrary axis rule.
void PlaneAxes(V3 n, V3& ax, V3& ay) {
  if (!Unit(n)) n = {0, 0, 1};
  ax = (std::abs(n.x) < 1.0 / 64 && std::abs(n.y) < 1.0 / 64) ? Cross({0, 1, 0}, n) : Cross({0, 0, 1}, n);
  Unit(ax);
  ay = Cross(n, ax);
}

// A 3D transform as its first three rows (x' = m[0] x + m[1] y + m[2] z + m[3], ...).
struct Transform {
  std::array<double, 12> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
  V3 Point(V3 p) const {
    return {m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3], m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
            m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]};
  }
  V3 Vector(V3 v) const {
    return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[4] * v.x + m[5] * v.y + m[6] * v.z,
            m[8] * v.x + m[9] * v.y + m[10] * v.z};
  }
  // This transform after `inner`.
  Transform operator*(const Transform& inner) const {
    Transform r;
    for (int row = 0; row < 3; ++row)
      for (int col = 0; col < 4; ++col) {
        double v = col == 3 ? m[std::size_t(row * 4 + 3)] : 0;
        for (int k = 0; k < 3; ++k) v += m[std::size_t(row * 4 + k)] * inner.m[std::size_t(k * 4 + col)];
        r.m[std::size_t(row * 4 + col)] = v;
      }
    return r;
  }
  // The plan map of a plane through `origin` spanned by `ax` and `ay`.
  Affine Plan(V3 origin, V3 ax, V3 ay) const {
    const V3 o = Point(origin), u = Vector(ax), v = Vector(ay);
    return {u.x, u.y, v.x, v.y, o.x, o.y};
  }
};

// Little-endian values from one command's data; reading past its end sets Short.
class Data {
 public:
  explicit Data(std::string_view bytes) : bytes_(bytes) {}
  bool Short() const { return short_; }
  std::size_t Left() const { return bytes_.size() - at_; }
  int32_t Int() {
    uint32_t v = 0;
    if (Take(4)) std::memcpy(&v, bytes_.data() + at_ - 4, 4);
    return int32_t(v);
  }
  double Real() {
    double v = 0;
    if (Take(8)) std::memcpy(&v, bytes_.data() + at_ - 8, 8);
    return v;
  }
  V3 Point() {
    const double x = Real(), y = Real(), z = Real();
    return {x, y, z};
  }
  // A count of items of `size` bytes each, held to what the data can hold.
  std::size_t Count(std::size_t size) {
    const int32_t n = Int();
    if (n < 0 || std::size_t(n) > Left() / size) short_ = true;
    return short_ ? 0 : std::size_t(n);
  }
  // A string ended by a zero byte, padded to a multiple of four bytes.
  std::string Ansi() {
    const std::size_t end = bytes_.find('\0', at_);
    const std::size_t stop = end == std::string_view::npos ? bytes_.size() : end;
    std::string s(bytes_.substr(at_, stop - at_));
    Skip(Padded(stop - at_ + 1));
    return s;
  }
  // A UTF-16 string ended by a zero unit, padded to a multiple of four bytes.
  std::string Utf16() {
    std::u32string text;
    std::size_t units = 0;
    for (; at_ + 2 * units + 1 < bytes_.size(); ++units) {
      const auto lo = uint8_t(bytes_[at_ + 2 * units]), hi = uint8_t(bytes_[at_ + 2 * units + 1]);
      const char32_t unit = char32_t(lo | (hi << 8));
      if (unit == 0) break;
      text.push_back(unit >= 0xD800 && unit <= 0xDFFF ? U'\uFFFD' : unit);
    }
    Skip(Padded(2 * units + 2));
    return ToUtf8(text);
  }
  void Skip(std::size_t n) { Take(n); }
  std::string_view Rest() const { return bytes_.substr(at_); }

 private:
  static std::size_t Padded(std::size_t n) { return (n + 3) / 4 * 4; }
  bool Take(std::size_t n) {
    if (short_ || n > Left()) {
      short_ = true;
      at_ = bytes_.size();
      return false;
    }
    at_ += n;
    return true;
  }
  std::string_view bytes_;
  std::size_t at_ = 0;
  bool short_ = false;
};

// The bit-coded values of the polyline command (the packing of a DWG entity body): a
// two-bit code before each number says how it is stored.
class Bits {
 public:
  explicit Bits(std::string_view bytes) : bytes_(bytes) {}
  bool Short() const { return short_; }
  uint32_t Take(int n) {
    uint32_t v = 0;
    for (int i = 0; i < n; ++i) {
      if (at_ >= bytes_.size() * 8) {
        short_ = true;
        return 0;
      }
      v = (v << 1) | ((uint8_t(bytes_[at_ >> 3]) >> (7 - (at_ & 7))) & 1);
      ++at_;
    }
    return v;
  }
  std::array<uint8_t, 8> Raw(int n, std::array<uint8_t, 8> into = {}, int from = 0) {
    for (std::size_t i = std::size_t(from); i < std::min(std::size_t(from + n), into.size()); ++i)
      into[i] = uint8_t(Take(8));
    return into;
  }
  static double AsReal(const std::array<uint8_t, 8>& b) {
    double v;
    std::memcpy(&v, b.data(), 8);
    return v;
  }
  int32_t Short16() {
    switch (Take(2)) {
      case 0: {
        const auto b = Raw(2);
        return int16_t(b[0] | (b[1] << 8));
      }
      case 1:
        return int32_t(Take(8));
      case 2:
        return 0;
      default:
        return 256;
    }
  }
  int64_t Long() {
    switch (Take(2)) {
      case 0: {
        const auto b = Raw(4);
        return int32_t(uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24);
      }
      case 1:
        return Take(8);
      case 2:
        return 0;
      default:
        short_ = true;
        return 0;
    }
  }
  double Real() {
    switch (Take(2)) {
      case 0:
        return AsReal(Raw(8));
      case 1:
        return 1;
      case 2:
        return 0;
      default:
        short_ = true;
        return 0;
    }
  }
  double RawReal() { return AsReal(Raw(8)); }
  // A value stored as the change of some bytes of `previous`.
  double Changed(double previous) {
    std::array<uint8_t, 8> b;
    std::memcpy(b.data(), &previous, 8);
    switch (Take(2)) {
      case 0:
        return previous;
      case 1:
        return AsReal(Raw(4, b, 0));
      case 2:
        b = Raw(2, b, 4);
        return AsReal(Raw(4, b, 0));
      default:
        return RawReal();
    }
  }
  // Bits left: a count beyond them cannot be there.
  std::size_t Left() const { return bytes_.size() * 8 - std::min(at_, bytes_.size() * 8); }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
  bool short_ = false;
};

bool Finite(const ProxyShape& s) {
  for (const PointD& p : s.Points)
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) return false;
  for (double b : s.Bulges)
    if (!std::isfinite(b)) return false;
  const Affine& f = s.Frame;
  return f.IsFinite() && std::isfinite(s.Radius) && std::isfinite(s.Start) && std::isfinite(s.End) &&
         std::isfinite(s.Height) && std::isfinite(s.WidthFactor) && std::isfinite(s.Oblique);
}

class Decoder {
 public:
  explicit Decoder(std::size_t maxShapes) : maxShapes_(maxShapes) {}
  ProxyGraphics Decode(std::string_view bytes);

 private:
  void Run(int32_t type, Data& d);
  bool Attribute(int32_t type, Data& d);
  void Add(ProxyShape shape);
  ProxyShape Shape(ProxyShape::Kind kind) const {
    ProxyShape s;
    s.Type = kind;
    s.Pen = pen_;
    return s;
  }
  PointD Plan(V3 p) const {
    const V3 q = top_.Point(p);
    return {q.x, q.y};
  }
  void Path(const std::vector<V3>& points, bool closed, bool filled);
  void Circle(V3 centre, double radius, V3 normal);
  void Arc(V3 centre, double radius, V3 normal, V3 startVector, double sweep, int32_t arcType);
  void ThreePoints(V3 p1, V3 p2, V3 p3, bool whole, int32_t arcType);
  void Mesh(Data& d);
  void Shell(Data& d);
  void LwPolyline(Data& d);
  void Text(Data& d, bool unicode, bool second);
  std::vector<V3> Points(Data& d) {
    std::vector<V3> points(d.Count(24));
    for (V3& p : points) p = d.Point();
    return points;
  }

  ProxyGraphics out_;
  ProxyPen pen_;
  Transform top_;
  std::vector<Transform> stack_;
  std::size_t ignoredPushes_ = 0;
  std::size_t maxShapes_;
};

ProxyGraphics Decoder::Decode(std::string_view bytes) {
  Data header(bytes);
  const int32_t total = header.Int();
  const int32_t count = header.Int();
  if (header.Short() || count < 0) {
    out_.Damaged = !bytes.empty();
    return std::move(out_);
  }
  if (total >= 8 && std::size_t(total) < bytes.size()) bytes = bytes.substr(0, std::size_t(total));
  std::size_t at = 8;
  for (int32_t i = 0; i < count; ++i) {
    Data head(bytes.substr(std::min(at, bytes.size())));
    const int32_t size = head.Int(), type = head.Int();
    if (head.Short() || size < 8 || std::size_t(size) > bytes.size() - at) {
      out_.Damaged = true;
      break;
    }
    Data d(bytes.substr(at + 8, std::size_t(size) - 8));
    ++out_.Commands;
    Run(type, d);
    at += std::size_t(size);
  }
  return std::move(out_);
}

void Decoder::Add(ProxyShape shape) {
  if (!Finite(shape) || out_.Shapes.size() >= maxShapes_) {
    ++out_.PassedOver;
    return;
  }
  out_.Shapes.push_back(std::move(shape));
}

bool Decoder::Attribute(int32_t type, Data& d) {
  switch (type) {
    case kColor:
      pen_.Aci = d.Int(), pen_.Rgb = -1;
      return true;
    case kTrueColor: {
      const uint32_t raw = uint32_t(d.Int());
      const uint32_t method = raw >> 24;
      pen_.Rgb = -1;
      if (method == 0xC2)
        pen_.Rgb = int32_t(raw & 0xFFFFFF);
      else if (method == 0xC3)
        pen_.Aci = int32_t(raw & 0xFF);
      else
        pen_.Aci = method == 0xC1 ? 0 : method == 0xC0 ? 256 : 7;
      return true;
    }
    case kLayer:
      pen_.Layer = d.Int();
      return true;
    case kLineType: {
      const int32_t index = d.Int();
      pen_.LineType = index == 0x7FFF ? ProxyPen::kByLayer : index == 0x7FFE ? ProxyPen::kByBlock : index;
      return true;
    }
    case kLineWeight:
      pen_.LineWeight = d.Int();
      return true;
    case kFill:
      pen_.Fill = d.Int() != 0;
      return true;
    default:
      return SetsNothingDrawn(type);
  }
}

void Decoder::Run(int32_t type, Data& d) {
  if (Attribute(type, d)) return;
  switch (type) {
    case kCircle: {
      const V3 c = d.Point();
      const double r = d.Real();
      Circle(c, r, d.Point());
      break;
    }
    case kCircle3P:
    case kArc3P: {
      const V3 p1 = d.Point(), p2 = d.Point(), p3 = d.Point();
      const int32_t arcType = type == kArc3P ? d.Int() : 0;
      if (!d.Short()) ThreePoints(p1, p2, p3, type == kCircle3P, arcType);
      break;
    }
    case kArc: {
      const V3 c = d.Point();
      const double r = d.Real();
      const V3 n = d.Point(), start = d.Point();
      const double sweep = d.Real();
      const int32_t arcType = d.Int();
      if (!d.Short()) Arc(c, r, n, start, sweep, arcType);
      break;
    }
    case kPolyline:
    case kPolylineWithNormals:
      Path(Points(d), false, false);
      break;
    case kPolygon:
      Path(Points(d), true, pen_.Fill);
      break;
    case kMesh:
      Mesh(d);
      break;
    case kShell:
      Shell(d);
      break;
    case kLwPolyline:
      LwPolyline(d);
      break;
    case kText:
    case kText2:
    case kUnicodeText:
    case kUnicodeText2:
      Text(d, type == kUnicodeText || type == kUnicodeText2, type == kText2 || type == kUnicodeText2);
      break;
    case kPushTransform:
    case kPushTransform2: {
      Transform m;
      for (double& v : m.m) v = d.Real();
      for (int i = 0; i < 4; ++i) d.Real();  // the projective row
      if (d.Short() || stack_.size() >= 64) {
        ++ignoredPushes_;
        break;
      }
      stack_.push_back(top_);
      top_ = top_ * m;
      break;
    }
    case kPopTransform:
      if (ignoredPushes_ > 0) {
        --ignoredPushes_;
      } else if (!stack_.empty()) {
        top_ = stack_.back();
        stack_.pop_back();
      }
      break;
    default:
      ++out_.PassedOver;
      break;
  }
}

void Decoder::Path(const std::vector<V3>& points, bool closed, bool filled) {
  if (points.size() < 2) return;
  ProxyShape s = Shape(ProxyShape::Kind::Path);
  for (const V3& p : points) s.Points.push_back(Plan(p));
  s.Closed = closed;
  s.Filled = filled && points.size() >= 3;
  Add(std::move(s));
}

void Decoder::Circle(V3 centre, double radius, V3 normal) { Arc(centre, radius, normal, {}, 2 * M_PI, 0); }

// A circular arc about `normal`, from the direction `startVector` (none: the plane's x
// axis) through `sweep` radians; arc type 1 closes it through the centre, 2 by its chord.
void Decoder::Arc(V3 centre, double radius, V3 normal, V3 startVector, double sweep, int32_t arcType) {
  V3 ax, ay;
  PlaneAxes(normal, ax, ay);
  if (!(std::abs(radius) > 0)) return;
  ProxyShape s = Shape(ProxyShape::Kind::Arc);
  s.Frame = top_.Plan(centre, ax, ay);
  s.Radius = std::abs(radius);
  const double from = Norm(startVector) > 0 ? std::atan2(Dot(startVector, ay), Dot(startVector, ax)) : 0;
  const double turn = std::isfinite(sweep) ? std::clamp(sweep, -2 * M_PI, 2 * M_PI) : 2 * M_PI;
  s.Start = turn < 0 ? from + turn : from;
  s.End = s.Start + std::abs(turn);
  const PointD a = s.Frame.Apply({s.Radius * std::cos(s.Start), s.Radius * std::sin(s.Start)});
  const PointD b = s.Frame.Apply({s.Radius * std::cos(s.End), s.Radius * std::sin(s.End)});
  const PointD c = s.Frame.Apply({0, 0});
  Add(std::move(s));
  if (arcType == 1) {
    ProxyShape edges = Shape(ProxyShape::Kind::Path);
    edges.Points = {a, c, b};
    Add(std::move(edges));
  } else if (arcType == 2) {
    ProxyShape chord = Shape(ProxyShape::Kind::Path);
    chord.Points = {a, b};
    Add(std::move(chord));
  }
}

// A circle through three points, or the arc from the first through the second to the
// third. Points on one line draw as lines.
void Decoder::ThreePoints(V3 p1, V3 p2, V3 p3, bool whole, int32_t arcType) {
  const V3 a = p1 - p3, b = p2 - p3, axb = Cross(a, b);
  const double d = 2 * Dot(axb, axb);
  if (!(d > 1e-300)) {
    Path({p1, p2, p3}, false, false);
    return;
  }
  const V3 centre = p3 + Cross(b * Dot(a, a) - a * Dot(b, b), axb) * (1 / d);
  V3 n = Cross(p2 - p1, p3 - p1);
  Unit(n);
  V3 ax = p1 - centre;
  const double radius = Norm(ax);
  if (!Unit(ax)) return;
  const V3 ay = Cross(n, ax), toEnd = p3 - centre;
  double sweep = std::atan2(Dot(toEnd, ay), Dot(toEnd, ax));
  if (sweep <= 0) sweep += 2 * M_PI;
  ProxyShape s = Shape(ProxyShape::Kind::Arc);
  s.Frame = top_.Plan(centre, ax, ay);
  s.Radius = radius;
  s.Start = 0;
  s.End = whole ? 2 * M_PI : sweep;
  Add(std::move(s));
  if (!whole && arcType == 1) Path({p1, centre, p3}, false, false);
  if (!whole && arcType == 2) Path({p1, p3}, false, false);
}

// A mesh of rows x columns vertices: its grid lines.
void Decoder::Mesh(Data& d) {
  const int32_t rows = d.Int(), cols = d.Int();
  if (d.Short() || rows < 1 || cols < 1 || std::size_t(rows) * std::size_t(cols) > d.Left() / 24) return;
  std::vector<V3> grid(std::size_t(rows) * std::size_t(cols));
  for (V3& p : grid) p = d.Point();
  const auto at = [&](int32_t r, int32_t c) {
    return grid[std::size_t(r) * std::size_t(cols) + std::size_t(c)];
  };
  for (int32_t r = 0; r < rows; ++r) {
    std::vector<V3> line;
    for (int32_t c = 0; c < cols; ++c) line.push_back(at(r, c));
    Path(line, false, false);
  }
  for (int32_t c = 0; c < cols; ++c) {
    std::vector<V3> line;
    for (int32_t r = 0; r < rows; ++r) line.push_back(at(r, c));
    Path(line, false, false);
  }
}

// A shell: vertices, then its faces as a list of (count, that many vertex indexes); a
// negative count is a hole of the face before. Each face is drawn as its outline, filled
// when the fill is on.
void Decoder::Shell(Data& d) {
  const std::vector<V3> vertices = Points(d);
  const std::size_t entries = d.Count(4);
  std::vector<int32_t> list(entries);
  for (int32_t& v : list) v = d.Int();
  for (std::size_t i = 0; i < list.size();) {
    const int32_t n = list[i++];
    const std::size_t count = std::min(std::size_t(n < 0 ? -int64_t(n) : n), list.size() - i);
    std::vector<V3> face;
    for (std::size_t k = 0; k < count; ++k) {
      const int64_t index = std::abs(int64_t(list[i + k]));
      if (std::size_t(index) < vertices.size()) face.push_back(vertices[std::size_t(index)]);
    }
    i += count;
    Path(face, true, pen_.Fill && n > 0);
  }
}

// The light-weight polyline command: a byte count, then the polyline's body bit-coded:
// flags, the optional constant width, elevation, thickness and normal, the counts, the
// points (the first whole, each next as the change from the one before), the bulges.
void Decoder::LwPolyline(Data& d) {
  const std::size_t size = d.Count(1);
  Bits b(d.Rest().substr(0, size));
  const int32_t flags = b.Short16();
  if (flags & 4) b.Real();
  const double elevation = (flags & 8) ? b.Real() : 0;
  if (flags & 2) b.Real();
  V3 normal{0, 0, 1};
  if (flags & 1) normal = {b.Real(), b.Real(), b.Real()};
  const auto count = [&b](int bitsEach) {
    const int64_t n = b.Long();
    return n < 0 || std::size_t(n) > b.Left() / std::size_t(bitsEach) ? std::size_t(0) : std::size_t(n);
  };
  const std::size_t points = count(4);
  const std::size_t bulges = (flags & 16) ? count(2) : 0;
  if (flags & 1024) count(2);
  if (flags & 32) count(4);
  if (b.Short() || points < 2) return;
  V3 ax, ay, n = normal;
  PlaneAxes(n, ax, ay);
  Unit(n);
  std::vector<PointD> ocs(points);
  ocs[0] = {b.RawReal(), b.RawReal()};
  for (std::size_t i = 1; i < points && !b.Short(); ++i) {
    const double x = b.Changed(ocs[i - 1].x);
    ocs[i] = {x, b.Changed(ocs[i - 1].y)};
  }
  ProxyShape s = Shape(ProxyShape::Kind::Path);
  for (const PointD& p : ocs) s.Points.push_back(Plan(ax * p.x + ay * p.y + n * elevation));
  for (std::size_t i = 0; i < bulges && !b.Short(); ++i) s.Bulges.push_back(b.Real());
  s.Bulges.resize(points, 0);
  s.Closed = (flags & 512) != 0;
  if (!b.Short()) Add(std::move(s));
}

// The four text commands: the point, normal and direction, then (the first kind) height,
// width factor and oblique angle before the string, or (the second kind) the string, its
// length and whether it is raw, then height, width factor and oblique angle.
void Decoder::Text(Data& d, bool unicode, bool second) {
  const V3 at = d.Point(), normal = d.Point();
  V3 direction = d.Point();
  ProxyShape s = Shape(ProxyShape::Kind::Text);
  s.Unicode = unicode;
  if (second) {
    s.Text = unicode ? d.Utf16() : d.Ansi();
    d.Int(), d.Int();
  }
  s.Height = d.Real();
  s.WidthFactor = d.Real();
  s.Oblique = Degrees(d.Real());
  if (!second) s.Text = unicode ? d.Utf16() : d.Ansi();
  if (d.Short() || s.Text.empty()) return;
  V3 n = normal;
  if (!Unit(n)) n = {0, 0, 1};
  if (!Unit(direction)) {
    V3 ay;
    PlaneAxes(n, direction, ay);
  }
  s.Frame = top_.Plan(at, direction, Cross(n, direction));
  if (!(s.WidthFactor > 0)) s.WidthFactor = 1;
  Add(std::move(s));
}

}  // namespace

ProxyGraphics DecodeProxyGraphics(std::string_view bytes, std::size_t maxShapes) {
  return Decoder(maxShapes).Decode(bytes);
}

}  // namespace dxfimport
