#include "render/redraw.h"

#include <QFontMetrics>
#include <QPagedPaintDevice>
#include <QPainter>

#include <cmath>

#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"
#include "support/texts.h"

namespace dxfimport {

// What one redraw works with: the canvas on the target and its device size.
struct ZoomState::Pass {
  Canvas& canvas;
  bool toPrinter;
};

namespace {

template <class Row>
Row& RowOf(std::vector<Row>& table, int32_t index) {
  if (index < 1 || std::size_t(index) > table.size()) throw RunTimeError(kErrSubscript);
  return table[std::size_t(index - 1)];
}

// The hourglass while a redraw runs, restored on every way out.
class BusyPointer {
 public:
  explicit BusyPointer(Surface& s) : surface_(s) { surface_.SetBusy(true); }
  ~BusyPointer() { surface_.SetBusy(false); }

 private:
  Surface& surface_;
};

int32_t Plus(int32_t a, int32_t b) {
  int32_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) throw RunTimeError(kErrOverflow);
  return sum;
}

float Divide(float a, float b) {
  if (b == 0) throw RunTimeError(kErrDivisionByZero);
  return a / b;
}

}  // namespace

ZoomRect ExtentsOf(const Drawing& d) { return {d.ExtMinX, d.ExtMaxY, d.ExtMaxX, d.ExtMinY}; }

int32_t ZoomState::EntityColor(int32_t layer, int32_t color, bool toPrinter) const {
  if (MonochromePrint && toPrinter) return 0;
  if (ColorByLayer && color == 0) {
    if (layer < 1 || layer > drawing_.LayerCount()) throw RunTimeError(kErrSubscript);
    return drawing_.Layers[std::size_t(layer - 1)].Color;
  }
  return color;
}

bool ZoomState::Zoom(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter) {
  if (drawing_.SeqCount() == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1051));
    return false;
  }
  BusyPointer busy(surface);
  try {
    return DrawPass(window, surface, metafile, toPrinter);
  } catch (const RunTimeError& e) {
    ReportError("Zoom", "DXFINVB", e.text(), e.number());
    return false;
  }
}

bool ZoomState::DrawPass(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter) {
  DXFEngine& e = Engine;
  QPaintDevice* device = surface.PaintDevice();
  int32_t lineHeight = 0;
  if (metafile) {
    device = metafile;
    e.DeviceWidth = surface.ScaleWidth();
    e.DeviceHeight = surface.ScaleHeight();
  } else if (toPrinter) {
    if (!Printer) throw RunTimeError(kErrInvalidCall);
    device = Printer;
    QFontMetrics metrics(QFont("Arial", 10), Printer);
    lineHeight = metrics.height() + metrics.descent();
    e.DeviceWidth = CInt(Printer->width() - 10);
    e.DeviceHeight = CInt(Printer->height() - 2 * lineHeight);
  } else {
    e.DeviceWidth = surface.ScaleWidth();
    e.DeviceHeight = surface.ScaleHeight();
  }

  float width = std::abs(window.right - window.left);
  float height = std::abs(window.top - window.bottom);
  if (width == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1052));
    return false;
  }
  ZoomRect view = window;
  float ratio = Divide(width, height);
  e.ViewAspect = Divide(float(e.DeviceWidth), float(e.DeviceHeight));
  if (e.ViewAspect < ratio) {
    height = width / e.ViewAspect;
    view.top = view.bottom + height;
  } else {
    width = height * e.ViewAspect;
    view.right = view.left + width;
  }
  e.CurrentZoom = view;
  e.ViewScale = Divide(float(e.DeviceWidth), width);
  e.Initialize(e.DeviceHeight, view.left, view.bottom, e.ViewScale, 0);

  QPainter painter(device);
  Canvas canvas(painter);
  std::vector<QVector<qreal>> patterns;
  for (const std::vector<float>& pattern : drawing_.DashPatterns)
    patterns.push_back(Canvas::PixelPattern(pattern, e.ViewScale));
  canvas.SetDashPatterns(std::move(patterns));
  Pass pass{canvas, toPrinter};
  const int32_t count = drawing_.SeqCount();
  const float step = 50000.0f / float(count);
  float threshold = step;
  for (int32_t i = 1; i <= count; ++i) {
    float percent = float(i) / float(count) * 100.0f;
    if (percent >= threshold) {
      threshold += step;
      surface.Refresh();
    }
    DrawEntity(pass, drawing_.DrawSeq[std::size_t(i - 1)]);
  }
  if (toPrinter) AddPrintBorder(canvas, lineHeight);
  painter.end();
  surface.Refresh();
  return true;
}

// The visibility test: the entity's device rectangle, made into its test rectangle, must
// meet the target's rectangle (0, 0, DeviceWidth, DeviceHeight).
bool ZoomState::Visible(const RECT& device) const {
  RECT test;
  if (!DXFEngine::MakeTestRect(device, test)) return false;
  int32_t left = std::min(test.left, test.right), right = std::max(test.left, test.right);
  int32_t top = std::min(test.top, test.bottom), bottom = std::max(test.top, test.bottom);
  return right > 0 && left < Engine.DeviceWidth && bottom > 0 && top < Engine.DeviceHeight && left < right &&
         top < bottom;
}

void ZoomState::DrawEntity(Pass& pass, const SeqEntry& entry) {
  const DXFEngine& e = Engine;
  Canvas& canvas = pass.canvas;
  switch (entry.Kind) {
    case kKindLine: {
      const LineEntity& l = RowOf(drawing_.Lines, entry.Index);
      if (!LayerOn(l.Layer)) return;
      RECT r{e.CvtX(l.X1), e.CvtY(l.Y1), e.CvtX(l.X2), e.CvtY(l.Y2)};
      int32_t color = EntityColor(l.Layer, l.Color, pass.toPrinter);
      if (Visible(r)) canvas.DrawLine(r, 1, color, l.LineType);
      return;
    }
    case kKindPolySeg: {
      const PolySegment& s = RowOf(drawing_.PolySegs, entry.Index);
      if (!LayerOn(s.Layer)) return;
      RECT r{e.CvtX(s.X1), e.CvtY(s.Y1), e.CvtX(s.X2), e.CvtY(s.Y2)};
      int32_t color = EntityColor(s.Layer, s.Color, pass.toPrinter);
      int32_t penWidth = std::max<int32_t>(1, CInt(double(s.Width) * e.ViewScale));
      if (s.Bulge != 0 && drawing_.BulgesAsArcs) return DrawBulgedSegment(pass, s, color, penWidth);
      if (Visible(r)) canvas.DrawLine(r, penWidth, color, 0);  // legacy: bulges are drawn straight
      return;
    }
    case kKindText: {
      TextEntity& t = RowOf(drawing_.Texts, entry.Index);
      if (LayerOn(t.Layer)) DrawTextEntity(pass, t);
      return;
    }
    case kKindArc: {
      const ArcEntity& a = RowOf(drawing_.Arcs, entry.Index);
      if (LayerOn(a.Layer)) DrawArcEntity(pass, a);
      return;
    }
    case kKindSolid: {
      const SolidEntity& s = RowOf(drawing_.Solids, entry.Index);
      if (!LayerOn(s.Layer)) return;
      std::array<DevicePoint, 4> points{{{e.CvtX(s.X1), e.CvtY(s.Y1)},
                                         {e.CvtX(s.X2), e.CvtY(s.Y2)},
                                         {e.CvtX(s.X4), e.CvtY(s.Y4)},
                                         {e.CvtX(s.X3), e.CvtY(s.Y3)}}};
      canvas.DrawSolid(points, EntityColor(s.Layer, s.Color, pass.toPrinter));  // no visibility test
      return;
    }
    case kKindAttrib: {
      AttribEntity& a = RowOf(drawing_.Attribs, entry.Index);
      if (LayerOn(a.Text.Layer) && AttributesVisible) DrawTextEntity(pass, a.Text);
      return;
    }
    case kKindHatch: {
      const HatchEntity& h = RowOf(drawing_.Hatches, entry.Index);
      if (LayerOn(h.Layer)) DrawHatchEntity(pass, h);
      return;
    }
    default:
      return;
  }
}

// A bulged segment as its arc: bulge = tan(included angle / 4), positive counter-clockwise
// from the segment's start to its end.
void ZoomState::DrawBulgedSegment(Pass& pass, const PolySegment& s, int32_t color, int32_t penWidth) {
  const DXFEngine& e = Engine;
  const double b = s.Bulge, dx = double(s.X2) - s.X1, dy = double(s.Y2) - s.Y1, d = std::hypot(dx, dy);
  if (d == 0) return;
  // An arc that strays less than half a pixel from its chord is drawn as the chord.
  if (std::abs(b) * d / 2 * e.ViewScale < 0.5) {
    RECT r{e.CvtX(s.X1), e.CvtY(s.Y1), e.CvtX(s.X2), e.CvtY(s.Y2)};
    if (Visible(r)) pass.canvas.DrawLine(r, penWidth, color, 0);
    return;
  }
  const double k = (1 - b * b) / (4 * b);
  const double cx = s.X1 + dx / 2 - dy * k, cy = s.Y1 + dy / 2 + dx * k;
  const double radius = d * (1 + b * b) / (4 * std::abs(b));
  const double limit = 3e38;
  if (!(std::abs(cx) + radius < limit && std::abs(cy) + radius < limit)) return;  // beyond any view
  RECT bounds{e.CvtX(float(cx - radius)), e.CvtY(float(cy + radius)), e.CvtX(float(cx + radius)),
              e.CvtY(float(cy - radius))};
  int32_t x1 = e.CvtX(s.X1), y1 = e.CvtY(s.Y1), x2 = e.CvtX(s.X2), y2 = e.CvtY(s.Y2);
  if (std::abs(x1 - x2) < 1 && std::abs(y1 - y2) < 1) return;
  if (!Visible(bounds)) return;
  ArcEnds ends = b > 0 ? ArcEnds{x1, y2, x2, y1} : ArcEnds{x2, y1, x1, y2};
  pass.canvas.DrawArc(bounds, ends, color, 0, penWidth);
}

void ZoomState::DrawHatchEntity(Pass& pass, const HatchEntity& h) {
  const DXFEngine& e = Engine;
  std::vector<QPolygon> loops;
  RECT box{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  for (std::size_t l = 0; l < h.LoopStarts.size(); ++l) {
    std::size_t from = std::size_t(h.LoopStarts[l]);
    std::size_t to = l + 1 < h.LoopStarts.size() ? std::size_t(h.LoopStarts[l + 1]) : h.Points.size();
    QPolygon loop;
    for (std::size_t i = from; i < to && i < h.Points.size(); ++i) {
      QPoint p(e.CvtX(h.Points[i].x), e.CvtY(h.Points[i].y));
      loop << p;
      box = {std::min(box.left, p.x()), std::min(box.top, p.y()), std::max(box.right, p.x()), std::max(box.bottom, p.y())};
    }
    loops.push_back(std::move(loop));
  }
  if (loops.empty() || !Visible(RECT{box.left, box.top, Plus(box.right, 1), Plus(box.bottom, 1)})) return;
  pass.canvas.DrawHatch(loops, EntityColor(h.Layer, h.Color, pass.toPrinter));
}

void ZoomState::DrawTextEntity(Pass& pass, TextEntity& t) {
  const DXFEngine& e = Engine;
  int32_t height = e.CvtTxtHt(t.Height, t.FontFactor);
  if (height == 50000 || height < 2) return;  // too small to read
  // A text many times larger than the picture shows nothing legible; its glyphs would
  // only cost memory.
  if (height > 16 * std::max(e.DeviceWidth, e.DeviceHeight)) return;
  int32_t left = e.CvtX(t.X);
  int32_t baseline = e.CvtY(t.Y);
  // The text and its font name are kept trimmed from the first redraw on.
  t.Text = std::string(Trim(t.Text));
  int32_t right = Plus(left, pass.canvas.CalcTxtWidth(t.Text));
  int32_t below = Plus(baseline, pass.canvas.CalcTxtHeight(t.Text));
  int32_t color = EntityColor(t.Layer, t.Color, pass.toPrinter);
  if (!Visible(RECT{left, below, right, baseline})) return;
  t.FontName = std::string(Trim(t.FontName));
  pass.canvas.DrawText(t.Text, left, baseline, height, t.Rotation, t.HorzJustify, color, t.FontName);
}

void ZoomState::DrawArcEntity(Pass& pass, const ArcEntity& a) {
  const DXFEngine& e = Engine;
  RECT bounds{e.CvtX(a.CenterX - a.Radius), e.CvtY(a.CenterY + a.Radius), e.CvtX(a.CenterX + a.Radius),
              e.CvtY(a.CenterY - a.Radius)};
  int32_t color = EntityColor(a.Layer, a.Color, pass.toPrinter);
  if (a.StartAngle == a.EndAngle) {
    if (Visible(bounds)) pass.canvas.DrawEllipse(bounds, color, a.LineType);
    return;
  }
  float a1 = float(a.StartAngle * 2 * 3.14159 / 360);
  float a2 = float(a.EndAngle * 2 * 3.14159 / 360);
  int32_t startX = e.CvtX(CSng(a.Radius * std::cos(a1) + a.CenterX));
  int32_t startY = e.CvtY(CSng(a.Radius * std::sin(a1) + a.CenterY));
  int32_t endX = e.CvtX(CSng(a.Radius * std::cos(a2) + a.CenterX));
  int32_t endY = e.CvtY(CSng(a.Radius * std::sin(a2) + a.CenterY));
  // Both ends on one pixel would draw a whole circle: such an arc is left out.
  if (std::abs(startX - endX) < 1 && std::abs(startY - endY) < 1) return;
  if (Visible(bounds)) pass.canvas.DrawArc(bounds, ArcEnds{startX, endY, endX, startY}, color, a.LineType);
}

}  // namespace dxfimport
