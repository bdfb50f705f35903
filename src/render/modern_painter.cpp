// The modern profile's drawing of each kind: drawing coordinates converted in double
// precision to unrounded device positions, curves flattened to a quarter pixel at the
// current zoom, colours by the colour index (colour 7 contrasting with the background),
// line types and, when asked, line weights; hatch patterns, points and construction
// lines as CAD tools show them.
#include <QBrush>
#include <QFontMetricsF>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <map>

#include "dxf/model/colors.h"
#include "dxf/model/extents.h"
#include "dxf/model/hatch_geometry.h"
#include "dxf/model/wide_band.h"
#include "render/clipping.h"
#include "render/redraw_job.h"

namespace dxfimport {
namespace {

constexpr int kMaxChords = 20000;
constexpr double kSmallestTextPixels = 1.5;  // capital height below which text is left out

class ModernPainter : public EntityPainter {
 public:
  ModernPainter(const RedrawJob& job, const Drawing& drawing, Canvas& canvas, QColor background,
                bool toPrinter);
  ~ModernPainter() override {
    for (; clipDepth_ > 0; --clipDepth_) painter_.restore();
    painter_.restore();
  }

  void Draw(const SeqEntry& entry) override;
  // Starts clipping to Clips[index - 1] within the clip in force; index 0 ends the last.
  void Clip(int32_t index);

 private:
  QPointF At(double x, double y) const { return {e_.DeviceX(x), e_.DeviceY(y)}; }
  QPointF At(PointD p) const { return At(p.x, p.y); }
  bool LayerOn(int32_t layer) const { return drawing_.LayerState(layer) != 0; }
  // The view, grown by `margin` pixels, meets the device box.
  bool Visible(const Box& device, double margin = 2) const;
  bool VisibleRow(const Box& units, double margin = 2) const;
  template <class Row>
  bool WorthLayingOut(const Row& text) const;
  // A text too small to read (below kSmallestTextPixels, above a third of that): the
  // grey mark its letters make, its box in its colour at a third of its strength.
  template <class Row>
  void MarkSmallText(const Row& text);
  // The ink of a colour value on `layer`, as opaque as `alpha` says.
  QColor ColorOf(int32_t value, int32_t layer, uint8_t alpha = kOpaque) const;
  double WeightPixels(int16_t weight) const;
  void UsePen(QColor color, double width, int32_t style);
  // The brush for the fills that follow (an invalid colour: no fill).
  void UseBrush(QColor color);

  void DrawLine(const LineEntity& l);
  void DrawSegment(const PolySegment& s, int32_t row);
  void DrawWideSegment(const PolySegment& s, int32_t row, QColor color);
  void FillPolygon(const QPolygonF& polygon, QColor color);
  void DrawArc(const ArcEntity& a);
  void DrawEllipse(const EllipseEntity& e);
  void DrawSolid(const SolidEntity& s);
  void DrawHatch(const HatchEntity& h);
  void DrawPatternLines(const HatchEntity& h, const std::vector<std::vector<PointD>>& loops, const Box& box);
  void FillLoops(const std::vector<std::vector<PointD>>& loops, QColor color);
  void FillLoops(const std::vector<std::vector<PointD>>& loops, const QBrush& brush);
  QPainterPath LoopsPath(const std::vector<std::vector<PointD>>& loops) const;
  QBrush GradientBrush(const HatchEntity& h);
  QColor Looked(int32_t bgr) const;
  void FillWithBackground(const std::vector<std::vector<PointD>>& loops);
  void DrawText(const TextLayout& layout, int32_t colorValue, int32_t layer, uint8_t alpha);
  void DrawPoint(const PointEntity& p);
  void DrawRay(const RayEntity& r);
  void DrawImage(const ImageEntity& image);
  void DrawPictureFrame(const ImageEntity& image);
  // The curve centre + u cos t + v sin t from t0 to t1 (radians), in visible runs.
  void StrokeCurve(PointD centre, PointD u, PointD v, double t0, double t1);
  void StrokeLine(QPointF a, QPointF b);

  const RedrawJob& job_;
  const DXFEngine& e_;
  const Drawing& drawing_;
  QPainter& painter_;
  bool toPrinter_;
  QColor background_;
  int32_t foreground_;
  std::vector<QVector<qreal>> dashPatterns_;
  QRectF view_;
  struct PenKey {
    QRgb color;
    double width;
    int32_t style;
    bool operator==(const PenKey&) const = default;
  };
  PenKey penKey_{0, -1, -1};
  std::vector<std::pair<PenKey, QPen>> pens_;  // the pens made so far in this redraw
  static constexpr QRgb kOtherBrush = 1;       // a brush of no one colour (a gradient)
  QRgb brushKey_ = 0;                          // the brush's colour; 0 none
  std::vector<std::pair<QRgb, QBrush>> brushes_;
  QPolygonF run_;
  mutable int32_t lastBgr_ = -1;  // the colour ColorOf gave last
  mutable QColor lastColor_;
  QTransform device_;  // drawing to device coordinates
  QTransform base_;    // device to the paint device (a strip of the picture is moved up)
  QRectF bounds_;      // the clip the painter came with (a strip's rows), null for none
  int clipDepth_ = 0;  // clips started and not yet ended
};

ModernPainter::ModernPainter(const RedrawJob& job, const Drawing& drawing, Canvas& canvas, QColor background,
                             bool toPrinter)
    : job_(job),
      e_(job.Engine),
      drawing_(drawing),
      painter_(canvas.painter()),
      toPrinter_(toPrinter),
      background_(background),
      foreground_(ContrastingColor(background.red() | (background.green() << 8) | (background.blue() << 16))),
      view_(0, 0, e_.DeviceWidth, e_.DeviceHeight),
      device_(e_.ViewScale, 0, 0, -e_.ViewScale, -e_.OriginX * e_.ViewScale,
              e_.DeviceHeight + e_.OriginY * e_.ViewScale) {
  painter_.save();
  base_ = painter_.transform();
  if (painter_.hasClipping()) bounds_ = painter_.clipBoundingRect();
  painter_.setRenderHint(QPainter::Antialiasing, job_.View.Display.Antialias);
  painter_.setRenderHint(QPainter::TextAntialiasing, true);
  painter_.setBrush(Qt::NoBrush);
  for (const std::vector<double>& pattern : drawing.DashPatterns)
    dashPatterns_.push_back(Canvas::PixelPattern(pattern, e_.ViewScale));
}

bool ModernPainter::Visible(const Box& b, double margin) const {
  return !b.Empty() && b.maxX >= -margin && b.minX <= e_.DeviceWidth + margin && b.maxY >= -margin &&
         b.minY <= e_.DeviceHeight + margin;
}

// A row's box in drawing units against the view (the window, grown by `margin` pixels).
// Whether a text may show in this view, judged before it is laid out (layouts are made
// on first sight and kept): readable at this zoom, and its estimated box, widened by
// its own size, near the view. Aligned text sets its height from its width: only the
// view decides there.
template <class Row>
void ModernPainter::MarkSmallText(const Row& text) {
  const double cap = std::abs(text.Height) * e_.ViewScale;
  if (!(cap < kSmallestTextPixels && cap >= kSmallestTextPixels / 3)) return;
  const Box box = RowBox(text);
  if (box.Empty() || !VisibleRow(box)) return;
  QColor color = ColorOf(text.Color, text.Layer, text.Alpha);
  color.setAlphaF(color.alphaF() / 3);
  // The box is at most a few pixels high: a line as thick as it is, along its middle.
  const QRectF r(At(box.minX, box.maxY), At(box.maxX, box.minY));
  const bool wide = r.width() >= r.height();
  UsePen(color, std::max(1.0, wide ? r.height() : r.width()), 0);
  const QPointF c = r.center();
  if (wide)
    StrokeLine({r.left(), c.y()}, {r.right(), c.y()});
  else
    StrokeLine({c.x(), r.top()}, {c.x(), r.bottom()});
}

template <class Row>
bool ModernPainter::WorthLayingOut(const Row& text) const {
  bool aligned = false;
  if constexpr (std::is_same_v<Row, TextEntity>) aligned = text.HorzJustify == 3;
  if (!aligned && !(std::abs(text.Height) * e_.ViewScale >= kSmallestTextPixels)) return false;
  const Box box = RowBox(text);
  if (box.Empty()) return true;
  const double reach = std::max(box.maxX - box.minX, box.maxY - box.minY) * e_.ViewScale;
  return VisibleRow(box, 2 + reach);
}

bool ModernPainter::VisibleRow(const Box& u, double margin) const {
  if (u.Empty()) return false;
  const ZoomRect& z = e_.CurrentZoom;
  const double m = margin / e_.ViewScale;
  return u.maxX >= z.left - m && u.minX <= z.right + m && u.maxY >= z.bottom - m && u.minY <= z.top + m;
}

QColor ModernPainter::ColorOf(int32_t value, int32_t layer, uint8_t alpha) const {
  const int32_t bgr = job_.View.InkOf(drawing_, layer, value, foreground_, toPrinter_);
  if (bgr != lastBgr_) {
    lastBgr_ = bgr;
    lastColor_ = Looked(bgr);
  }
  if (alpha >= kOpaque) return lastColor_;
  QColor see = lastColor_;
  see.setAlpha(alpha);
  return see;
}

// An ink as the display's look has it: one colour for all, faded toward the background.
QColor ModernPainter::Looked(int32_t bgr) const {
  const DisplayOptions& look = job_.View.Display;
  if (look.Monochrome >= 0) bgr = look.Monochrome;
  int red = bgr & 0xFF, green = (bgr >> 8) & 0xFF, blue = (bgr >> 16) & 0xFF;
  if (look.Fade > 0) {
    const int fade = std::clamp(look.Fade, 0, 100);
    auto toward = [fade](int ink, int back) {
      return ink + ((back - ink) * fade + (back > ink ? 50 : -50)) / 100;
    };
    red = toward(red, background_.red()), green = toward(green, background_.green()),
    blue = toward(blue, background_.blue());
  }
  return QColor::fromRgb(qRgb(red, green, blue));
}

// A line weight in pixels at the picture's resolution, or 0 (a one-pixel pen) when line
// weights are not shown.
double ModernPainter::WeightPixels(int16_t weight) const {
  if (!job_.View.Display.LineWeights) return 0;
  const int16_t w = weight >= 0 ? weight : drawing_.DefaultLineWeight;
  const double pixels = w / 100.0 * job_.View.Display.Dpi / 25.4;
  return pixels > 1.5 ? pixels : 0;
}

void ModernPainter::UsePen(QColor color, double width, int32_t style) {
  const PenKey key{color.rgba(), width, style};
  if (key == penKey_) return;
  penKey_ = key;
  // Entities of a few layers alternate: the pens are made once and handed out again.
  for (const auto& [made, pen] : pens_) {
    if (made == key) return painter_.setPen(pen);
  }
  QPen pen(color, width, Qt::SolidLine, width > 1.5 ? Qt::RoundCap : Qt::FlatCap, Qt::RoundJoin);
  if (style >= Drawing::kFirstDashPattern) {
    const std::size_t i = std::size_t(style - Drawing::kFirstDashPattern);
    if (i < dashPatterns_.size() && !dashPatterns_[i].isEmpty()) {
      QVector<qreal> pattern = dashPatterns_[i];
      if (width > 1)
        for (qreal& v : pattern) v = std::max(0.1, v / width);
      pen.setDashPattern(pattern);
    }
  } else if (style > 0) {
    pen.setStyle(Canvas::ToPenStyle(style));
  }
  if (pens_.size() >= 64) pens_.erase(pens_.begin());
  pens_.emplace_back(key, pen);
  painter_.setPen(pen);
}

void ModernPainter::UseBrush(QColor color) {
  const QRgb key = color.isValid() ? color.rgba() : 0;
  if (key == brushKey_) return;
  brushKey_ = key;
  if (!key) return painter_.setBrush(Qt::NoBrush);
  for (const auto& [made, brush] : brushes_) {
    if (made == key) return painter_.setBrush(brush);
  }
  if (brushes_.size() >= 64) brushes_.erase(brushes_.begin());
  brushes_.emplace_back(key, QBrush(color));
  painter_.setBrush(brushes_.back().second);
}

void ModernPainter::Draw(const SeqEntry& entry) {
  if (entry.Kind == kKindClip) return Clip(entry.Index);
  VisitRow(drawing_, entry, [this, &entry](const auto& row) {
    using Row = std::decay_t<decltype(row)>;
    if constexpr (std::is_same_v<Row, LineEntity>) {
      if (LayerOn(row.Layer)) DrawLine(row);
    } else if constexpr (std::is_same_v<Row, PolySegment>) {
      if (LayerOn(row.Layer)) DrawSegment(row, entry.Index);
    } else if constexpr (std::is_same_v<Row, TextEntity>) {
      if (LayerOn(row.Layer) && WorthLayingOut(row))
        DrawText(job_.Caches.Texts.Of(row, kKindText, entry.Index, drawing_), row.Color, row.Layer,
                 row.Alpha);
      else if (LayerOn(row.Layer))
        MarkSmallText(row);
    } else if constexpr (std::is_same_v<Row, AttribEntity>) {
      if (LayerOn(row.Text.Layer) && job_.View.AttributesVisible && WorthLayingOut(row.Text))
        DrawText(job_.Caches.Texts.Of(row.Text, kKindAttrib, entry.Index, drawing_), row.Text.Color,
                 row.Text.Layer, row.Text.Alpha);
      else if (LayerOn(row.Text.Layer) && job_.View.AttributesVisible)
        MarkSmallText(row.Text);
    } else if constexpr (std::is_same_v<Row, MTextEntity>) {
      if (LayerOn(row.Layer) && WorthLayingOut(row))
        DrawText(job_.Caches.Texts.Of(row, entry.Index, drawing_), row.Color, row.Layer, row.Alpha);
      else if (LayerOn(row.Layer))
        MarkSmallText(row);
    } else if constexpr (std::is_same_v<Row, ArcEntity>) {
      if (LayerOn(row.Layer)) DrawArc(row);
    } else if constexpr (std::is_same_v<Row, EllipseEntity>) {
      if (LayerOn(row.Layer)) DrawEllipse(row);
    } else if constexpr (std::is_same_v<Row, SolidEntity>) {
      if (LayerOn(row.Layer)) DrawSolid(row);
    } else if constexpr (std::is_same_v<Row, HatchEntity>) {
      if (LayerOn(row.Layer)) DrawHatch(row);
    } else if constexpr (std::is_same_v<Row, PointEntity>) {
      if (LayerOn(row.Layer)) DrawPoint(row);
    } else if constexpr (std::is_same_v<Row, RayEntity>) {
      if (LayerOn(row.Layer)) DrawRay(row);
    } else if constexpr (std::is_same_v<Row, ImageEntity>) {
      if (LayerOn(row.Layer)) DrawImage(row);
    }
  });
}

void ModernPainter::Clip(int32_t index) {
  if (index <= 0 || std::size_t(index) > drawing_.Clips.size()) {
    if (clipDepth_ == 0) return;
    --clipDepth_;
    painter_.restore();
    penKey_ = {0, -1, -1};  // the pen and brush are the ones from before the clip
    brushKey_ = 0;
    return;
  }
  painter_.save();
  ++clipDepth_;
  QPainterPath path;
  path.setFillRule(Qt::OddEvenFill);
  for (const std::vector<PointD>& loop : drawing_.Clips[std::size_t(index - 1)].Loops) {
    QPolygonF boundary;
    for (const PointD& p : loop) boundary << At(p);
    path.addPolygon(ClipPolygon(boundary, view_.adjusted(-4, -4, 4, 4)));
    path.closeSubpath();
  }
  painter_.setClipPath(path, painter_.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
}

// A line clipped to the view (so that far-away ends never reach the rasterizer).
void ModernPainter::StrokeLine(QPointF a, QPointF b) {
  const double margin = 2 + painter_.pen().widthF();
  if (ClipSegment(a, b, view_.adjusted(-margin, -margin, margin, margin))) painter_.drawLine(QLineF(a, b));
}

void ModernPainter::DrawLine(const LineEntity& l) {
  UsePen(ColorOf(l.Color, l.Layer, l.Alpha), WeightPixels(l.LineWeight), l.LineType);
  StrokeLine(At(l.X1, l.Y1), At(l.X2, l.Y2));
}

void ModernPainter::DrawSegment(const PolySegment& s, int32_t row) {
  const QColor color = ColorOf(s.Color, s.Layer, s.Alpha);
  if (std::max(std::abs(s.Width), std::abs(s.EndWidth)) * e_.ViewScale > 1.5)
    return DrawWideSegment(s, row, color);
  UsePen(color, WeightPixels(s.LineWeight), s.LineType);
  BulgeArc arc;
  const bool curved = s.Bulge != 0 && ArcOfBulge({s.X1, s.Y1}, {s.X2, s.Y2}, s.Bulge, arc);
  // An arc that strays less than half a pixel from its chord is drawn as the chord.
  const double dx = s.X2 - s.X1, dy = s.Y2 - s.Y1;
  const double sagitta = std::abs(s.Bulge) * std::sqrt(dx * dx + dy * dy) / 2 * e_.ViewScale;
  if (!curved || sagitta < 0.5) return StrokeLine(At(s.X1, s.Y1), At(s.X2, s.Y2));
  const Sweep sweep = SweepOf(Radians(arc.startDegrees), Radians(arc.endDegrees));
  StrokeCurve(arc.centre, {arc.radius, 0}, {0, arc.radius}, sweep.start, sweep.end);
}

void ModernPainter::FillPolygon(const QPolygonF& polygon, QColor color) {
  penKey_ = {0, -1, -1};
  painter_.setPen(Qt::NoPen);
  UseBrush(color);
  painter_.drawPolygon(ClipPolygon(polygon, view_.adjusted(-8, -8, 8, 8)), Qt::OddEvenFill);
}

// A segment with width: its band (WideBand) filled.
void ModernPainter::DrawWideSegment(const PolySegment& s, int32_t row, QColor color) {
  if (!VisibleRow(RowBox(s))) return;
  const std::vector<PointD> outline = WideBand(drawing_, s, row, e_.ViewScale);
  if (outline.empty()) return;
  QPolygonF band;
  band.reserve(qsizetype(outline.size()));
  for (const PointD& p : outline) band << At(p);
  FillPolygon(band, color);
}

void ModernPainter::DrawArc(const ArcEntity& a) {
  // The whole circle's box first: the arc's own box is needed only at the view's edge.
  const Box circle{a.CenterX - a.Radius, a.CenterY - a.Radius, a.CenterX + a.Radius, a.CenterY + a.Radius};
  if (!VisibleRow(circle)) return;
  const ZoomRect& z = e_.CurrentZoom;
  const bool inside =
      circle.minX >= z.left && circle.maxX <= z.right && circle.minY >= z.bottom && circle.maxY <= z.top;
  if (!inside && !VisibleRow(RowBox(a))) return;
  UsePen(ColorOf(a.Color, a.Layer, a.Alpha), WeightPixels(a.LineWeight), a.LineType);
  const Sweep sweep =
      a.StartAngle == a.EndAngle ? Sweep{} : SweepOf(Radians(a.StartAngle), Radians(a.EndAngle));
  StrokeCurve({a.CenterX, a.CenterY}, {a.Radius, 0}, {0, a.Radius}, sweep.start, sweep.end);
}

void ModernPainter::DrawEllipse(const EllipseEntity& el) {
  if (!VisibleRow(RowBox(el))) return;
  UsePen(ColorOf(el.Color, el.Layer, el.Alpha), WeightPixels(el.LineWeight), el.LineType);
  StrokeCurve({el.CenterX, el.CenterY}, {el.UX, el.UY}, {el.VX, el.VY}, el.Start,
              std::min(el.End, el.Start + 2 * M_PI));
}

void ModernPainter::StrokeCurve(PointD c, PointD u, PointD v, double t0, double t1) {
  const double radius = std::sqrt(std::max(u.x * u.x + u.y * u.y, v.x * v.x + v.y * v.y)) * e_.ViewScale;
  const double sweep = t1 - t0;
  if (!(radius > 0) || !(sweep > 0) || !std::isfinite(radius)) return;
  // Chords within a quarter pixel of the curve.
  const double step = radius > 0.25 ? 2 * std::acos(std::max(-1.0, 1 - 0.25 / radius)) : sweep;
  const int chords = int(std::clamp(std::ceil(sweep / step), 4.0, double(kMaxChords)));
  const double margin = 2 + painter_.pen().widthF();
  const QRectF bounds = view_.adjusted(-margin, -margin, margin, margin);
  run_.clear();
  QPointF previous;
  // cos and sin of t stepped by rotation: one sincos for the whole curve.
  const double dc = std::cos(sweep / chords), ds = std::sin(sweep / chords);
  double ct = std::cos(t0), st = std::sin(t0);
  for (int i = 0; i <= chords; ++i) {
    if (i > 0) {
      const double next = ct * dc - st * ds;
      st = st * dc + ct * ds, ct = next;
    }
    const QPointF p = At(c + u * ct + v * st);
    if (i > 0) {
      QPointF a = previous, b = p;
      auto in = [&bounds](QPointF q) {
        return q.x() >= bounds.left() && q.x() <= bounds.right() && q.y() >= bounds.top() &&
               q.y() <= bounds.bottom();
      };
      const bool inside = in(a) && in(b);
      if (inside || ClipSegment(a, b, bounds)) {
        if (run_.isEmpty() || run_.back() != a) {
          if (run_.size() > 1) painter_.drawPolyline(run_);
          run_.clear();
          run_ << a;
        }
        run_ << b;
      }
    }
    previous = p;
  }
  if (run_.size() > 1) painter_.drawPolyline(run_);
}

void ModernPainter::DrawSolid(const SolidEntity& s) {
  QPolygonF corners;
  corners << At(s.X1, s.Y1) << At(s.X2, s.Y2) << At(s.X4, s.Y4) << At(s.X3, s.Y3);
  Box box;
  for (const QPointF& p : corners) box.Add({p.x(), p.y()});
  if (!Visible(box)) return;
  const QColor color = ColorOf(s.Color, s.Layer);
  UsePen(color, 0, 0);
  UseBrush(color);
  painter_.drawPolygon(ClipPolygon(corners, view_.adjusted(-4, -4, 4, 4)), Qt::OddEvenFill);
}

void ModernPainter::DrawHatch(const HatchEntity& h) {
  std::vector<std::vector<PointD>> loops;  // in device coordinates
  Box box;
  for (const LoopRange& range : HatchLoops(h)) {
    std::vector<PointD>& loop = loops.emplace_back();
    loop.reserve(range.to - range.from);
    for (std::size_t i = range.from; i < range.to; ++i) {
      const QPointF p = At(h.Points[i]);
      loop.push_back({p.x(), p.y()});
      box.Add(loop.back());
    }
  }
  if (loops.empty() || !Visible(box)) return;
  if (h.Filling == HatchEntity::Fill::Pattern) return DrawPatternLines(h, loops, box);
  if (h.Filling == HatchEntity::Fill::Gradient) return FillLoops(loops, GradientBrush(h));
  if (h.Filling == HatchEntity::Fill::Background) return FillWithBackground(loops);
  FillLoops(loops, ColorOf(h.Color, h.Layer, h.Alpha));
}

// A wipeout: the background put back, a transparent one too (what lies below is cleared).
void ModernPainter::FillWithBackground(const std::vector<std::vector<PointD>>& loops) {
  if (background_.alpha() == 255) return FillLoops(loops, background_);
  painter_.setCompositionMode(QPainter::CompositionMode_Source);
  FillLoops(loops, QColor(Qt::transparent));
  painter_.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

// The area the loops bound (even-odd), filled with `color`.
void ModernPainter::FillLoops(const std::vector<std::vector<PointD>>& loops, QColor color) {
  penKey_ = {0, -1, -1};
  painter_.setPen(Qt::NoPen);
  UseBrush(color);
  painter_.drawPath(LoopsPath(loops));
}

void ModernPainter::FillLoops(const std::vector<std::vector<PointD>>& loops, const QBrush& brush) {
  penKey_ = {0, -1, -1};
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(brush);
  brushKey_ = kOtherBrush;
  painter_.drawPath(LoopsPath(loops));
}

// The gradient of a hatch over its span (GradientSpanOf), its stops mixed from its two
// colours.
QBrush ModernPainter::GradientBrush(const HatchEntity& h) {
  const HatchGradient& g = h.Gradient;
  const GradientSpan span = GradientSpanOf(h);
  const QColor from = ColorOf(g.From, h.Layer, h.Alpha), to = ColorOf(g.To, h.Layer, h.Alpha);
  auto mixed = [&from, &to](double k) {
    return QColor::fromRgbF(float(from.redF() + (to.redF() - from.redF()) * k),
                            float(from.greenF() + (to.greenF() - from.greenF()) * k),
                            float(from.blueF() + (to.blueF() - from.blueF()) * k), float(from.alphaF()));
  };
  QGradientStops stops;
  for (const GradientStop& stop : GradientStops(g.Kind)) stops.append({stop.at, mixed(stop.mix)});
  if (RoundGradient(g.Kind)) {
    QRadialGradient round(At(span.centre), std::max(span.radius * e_.ViewScale, 1e-3));
    round.setStops(stops);
    return QBrush(round);
  }
  QLinearGradient along(At(span.from), At(span.to));
  along.setStops(stops);
  return QBrush(along);
}

QPainterPath ModernPainter::LoopsPath(const std::vector<std::vector<PointD>>& loops) const {
  const QRectF clip = view_.adjusted(-8, -8, 8, 8);
  QPainterPath path;
  path.setFillRule(Qt::OddEvenFill);
  for (const std::vector<PointD>& loop : loops) {
    QPolygonF polygon;
    polygon.reserve(qsizetype(loop.size()));
    for (const PointD& p : loop) polygon << QPointF(p.x, p.y);
    path.addPolygon(ClipPolygon(polygon, clip));
  }
  return path;
}

// Pattern lines across the boundary (even-odd inside), dashed as the pattern says. A
// family whose lines would fall closer than about a pixel apart (or be too many to draw)
// is drawn as a tint: the boundary filled with the colour at half cover.
void ModernPainter::DrawPatternLines(const HatchEntity& h, const std::vector<std::vector<PointD>>& loops,
                                     const Box& box) {
  const QColor color = ColorOf(h.Color, h.Layer, h.Alpha);
  const QRectF area = QRectF(QPointF(box.minX, box.minY), QPointF(box.maxX, box.maxY))
                          .intersected(view_.adjusted(-2, -2, 2, 2));
  if (area.isEmpty()) return;
  const std::array<PointD, 4> corners{PointD{area.left(), area.top()}, PointD{area.right(), area.top()},
                                      PointD{area.left(), area.bottom()},
                                      PointD{area.right(), area.bottom()}};
  bool tint = false;
  std::size_t edges = 0;
  for (const std::vector<PointD>& loop : loops) edges += loop.size();
  std::vector<double> crossings;
  for (const PatternLine& line : h.Pattern) {
    const PointD dir{line.Direction.x * e_.ViewScale, -line.Direction.y * e_.ViewScale};
    const PointD offset{line.Offset.x * e_.ViewScale, -line.Offset.y * e_.ViewScale};
    const double dirLength = std::hypot(dir.x, dir.y);
    if (!(dirLength > 0)) continue;
    const PointD unit = dir * (1 / dirLength);
    const double spacing = std::abs(offset.x * unit.y - offset.y * unit.x);
    const QPointF deviceBase = At(line.Base);
    const PointD base{deviceBase.x(), deviceBase.y()};
    const auto [lo, hi] = FamilyRange(base, offset, unit, corners);
    // Lines closer than a pixel, or more crossings to find than a redraw can afford.
    const double lines = hi - lo;
    if (!(spacing >= 1.2) || !(lines < 20000) || !(lines * double(edges) < 4e6)) {
      tint = true;
      continue;
    }
    UsePen(color, 0, 0);
    const double firstLine = std::ceil(lo);
    const auto count = int64_t(std::floor(hi) - firstLine) + 1;  // below 20000, checked above
    for (int64_t n = 0; n < count; ++n) {
      const PointD origin = base + offset * (firstLine + double(n));
      BoundaryCrossings(loops, origin, dir, crossings);
      for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
        DashRun(painter_, QPointF(origin.x, origin.y), QPointF(dir.x, dir.y), crossings[i], crossings[i + 1],
                line.Dashes, view_);
    }
  }
  // Half covering, so that what lies beneath shows through as it would between the lines.
  if (tint) {
    QColor mixed = color;
    mixed.setAlphaF(0.5);
    FillLoops(loops, mixed);
  }
}

// A laid-out text: its background, its glyph runs and its strokes, mapped from its
// frame to the device. Text whose capitals would be lower than a pixel and a half, or far
// larger than the picture, is left out.
void ModernPainter::DrawText(const TextLayout& layout, int32_t colorValue, int32_t layer, uint8_t alpha) {
  const double capPixels = layout.height * e_.ViewScale;
  if (!(capPixels >= kSmallestTextPixels) || capPixels > 16.0 * std::max(e_.DeviceWidth, e_.DeviceHeight))
    return;
  const QTransform toDevice = TextLayouts::FrameTransform(layout) * device_;
  QRectF covered = layout.box;
  if (layout.fill) covered |= *layout.fill;
  if (!toDevice.mapRect(covered).intersects(view_)) return;
  const QColor own = ColorOf(colorValue, layer, alpha);
  penKey_ = {0, -1, -1};
  if (layout.fill) {
    painter_.setPen(Qt::NoPen);
    // The background colour on a transparent background clears what lies below.
    const bool clear = layout.fillBackground && background_.alpha() < 255;
    if (clear) painter_.setCompositionMode(QPainter::CompositionMode_Source);
    UseBrush(layout.fillBackground ? background_ : ColorOf(layout.fillColor, layer, alpha));
    painter_.drawPolygon(toDevice.map(QPolygonF(*layout.fill)));
    if (clear) painter_.setCompositionMode(QPainter::CompositionMode_SourceOver);
  }
  // Glyphs and their strokes with smoothed edges; the painter's state is put back by
  // hand below (cheaper than saving and restoring all of it for every text).
  painter_.setRenderHint(QPainter::Antialiasing, true);
  std::unique_lock fonts(job_.Caches.Texts.Fonts());
  for (const TextLayout::Run& run : layout.runs) {
    const QTransform glyphs(run.scale * run.widthScale, 0, -run.shear * run.scale, -run.scale, run.origin.x(),
                            run.origin.y());
    painter_.setTransform(glyphs * toDevice * base_);
    painter_.setPen(run.color ? ColorOf(run.color, layer, alpha) : own);
    painter_.drawGlyphRun(QPointF(0, 0), run.glyphs);
  }
  fonts.unlock();
  painter_.setTransform(base_);
  for (const TextLayout::Stroke& stroke : layout.strokes) {
    painter_.setPen(
        QPen(stroke.color ? ColorOf(stroke.color, layer, alpha) : own, std::max(1.0, capPixels * 0.07)));
    painter_.drawLine(toDevice.map(stroke.line));
  }
  painter_.setRenderHint(QPainter::Antialiasing, job_.View.Display.Antialias);
}

// A point in the drawing's point style: a dot, a plus, a cross or a tick, with a circle
// and/or a square around it; its size from $PDSIZE (5 % of the view's height when 0, a
// percentage of it when negative).
void ModernPainter::DrawPoint(const PointEntity& p) {
  const PointStyle& style = drawing_.PointDisplay;
  const QPointF c = At(p.X, p.Y);
  double size = style.Size > 0 ? style.Size * e_.ViewScale
                               : (style.Size < 0 ? -style.Size / 100 : 0.05) * e_.DeviceHeight;
  size = std::clamp(size, 1.0, double(std::max(e_.DeviceWidth, e_.DeviceHeight)));
  const double r = size / 2;
  if (!Visible({c.x() - r, c.y() - r, c.x() + r, c.y() + r})) return;
  UsePen(ColorOf(p.Color, p.Layer, p.Alpha), 0, 0);
  switch (style.Mode & 7) {
    case 0:
      painter_.drawPoint(c);
      break;
    case 2:
      painter_.drawLine(QLineF(c.x() - r, c.y(), c.x() + r, c.y()));
      painter_.drawLine(QLineF(c.x(), c.y() - r, c.x(), c.y() + r));
      break;
    case 3:
      painter_.drawLine(QLineF(c.x() - r, c.y() - r, c.x() + r, c.y() + r));
      painter_.drawLine(QLineF(c.x() - r, c.y() + r, c.x() + r, c.y() - r));
      break;
    case 4:
      painter_.drawLine(QLineF(c, QPointF(c.x(), c.y() - r)));
      break;
    default:
      break;
  }
  UseBrush(QColor());
  if (style.Mode & 32) painter_.drawEllipse(c, r, r);
  if (style.Mode & 64) painter_.drawRect(QRectF(c.x() - r, c.y() - r, size, size));
}

// A ray from its base point, or a construction line both ways, to the view's edges.
void ModernPainter::DrawRay(const RayEntity& r) {
  const QPointF base = At(r.X, r.Y);
  const QPointF dir(r.DX * e_.ViewScale, -r.DY * e_.ViewScale);
  double t0 = r.BothWays ? -1e300 : 0, t1 = 1e300;
  if (!ClipLineRange(base, dir, view_.adjusted(-2, -2, 2, 2), t0, t1)) return;
  UsePen(ColorOf(r.Color, r.Layer, r.Alpha), WeightPixels(r.LineWeight), r.LineType);
  painter_.drawLine(QLineF(base + dir * t0, base + dir * t1));
}

}  // namespace

std::unique_ptr<EntityPainter> MakeModernPainter(const RedrawJob& job, const Drawing& drawing, Canvas& canvas,
                                                 QColor background, bool toPrinter) {
  return std::make_unique<ModernPainter>(job, drawing, canvas, background, toPrinter);
}

// A raster image: its picture mapped onto its frame, within its clip boundary, faded
// toward the background; without a picture, its frame and the name of its file.
void ModernPainter::DrawImage(const ImageEntity& image) {
  if (!VisibleRow(RowBox(image))) return;
  const QPointF corner = At(image.Origin);
  const double across = std::max(QLineF(corner, At(image.Origin + image.Width)).length(),
                                 QLineF(corner, At(image.Origin + image.Height)).length());
  const QImage& picture = job_.Caches.Pictures.Of(drawing_, image, across);
  if (picture.isNull()) return DrawPictureFrame(image);
  painter_.save();
  if (!image.Clip.empty()) {
    QPainterPath clip;
    QPolygonF boundary;
    for (const PointD& p : image.Clip) boundary << At(p);
    clip.addPolygon(boundary);
    clip.closeSubpath();
    if (image.ClipInverted) {
      QPainterPath all;
      all.addRect(view_.adjusted(-2, -2, 2, 2));
      clip = all.subtracted(clip);
    }
    painter_.setClipPath(clip, Qt::IntersectClip);
  }
  // Pixel (x, y) from the picture's top left lies at Origin + Width x / w + Height (1 - y / h).
  const double w = picture.width(), h = picture.height();
  const QTransform toDrawing(image.Width.x / w, image.Width.y / w, -image.Height.x / h, -image.Height.y / h,
                             image.Origin.x + image.Height.x, image.Origin.y + image.Height.y);
  painter_.setTransform(toDrawing * device_ * base_);
  painter_.setRenderHint(QPainter::SmoothPixmapTransform, true);
  painter_.setOpacity((1 - image.Fade / 100.0) * (1 - std::clamp(job_.View.Display.Fade, 0, 100) / 100.0) *
                      image.Alpha / 255.0);
  painter_.drawImage(QPointF(0, 0), picture);
  painter_.restore();
}

void ModernPainter::DrawPictureFrame(const ImageEntity& image) {
  const QColor color = ColorOf(image.Color, image.Layer, image.Alpha);
  UsePen(color, 0, 0);
  std::vector<PointD> frame = image.Clip;
  if (frame.empty() && (image.Width != PointD{} || image.Height != PointD{}))
    frame = {image.Origin, image.Origin + image.Width, image.Origin + image.Width + image.Height,
             image.Origin + image.Height};
  if (frame.empty()) return;  // an underlay whose page is not known, and that has no clip
  for (std::size_t i = 0; i < frame.size(); ++i) StrokeLine(At(frame[i]), At(frame[(i + 1) % frame.size()]));
  if (image.Picture < 1 || std::size_t(image.Picture) > drawing_.Pictures.size()) return;
  // The name, a line of small print at the frame's top-left corner.
  Box box;
  for (const PointD& p : frame) box.Add(p);
  const QPointF corner = At(box.minX, box.maxY);
  QFont font = painter_.font();
  font.setPixelSize(11);
  painter_.save();
  painter_.setFont(font);
  painter_.setPen(color);
  painter_.drawText(corner + QPointF(3, 13),
                    QString::fromStdString(drawing_.Pictures[std::size_t(image.Picture - 1)].Name));
  painter_.restore();
}

}  // namespace dxfimport
