// The legacy profile's drawing of each kind, as the original importer drew it: integer
// device points through CvtX/CvtY, single-precision arithmetic, straight polyline
// segments, the crossed text measurements of the visibility rectangle.
#include <cmath>

#include "render/redraw_job.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

int32_t Plus(int32_t a, int32_t b) {
  int32_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) throw RunTimeError(kErrOverflow);
  return sum;
}

class LegacyPainter : public EntityPainter {
 public:
  LegacyPainter(const RedrawJob& job, Drawing& drawing, Canvas& canvas, bool toPrinter)
      : view_(job.View), e_(job.Engine), drawing_(drawing), canvas_(canvas), toPrinter_(toPrinter) {}

  void Draw(const SeqEntry& entry) override;

 private:
  void DrawTextEntity(TextEntity& text);
  void DrawArcEntity(const ArcEntity& arc);
  bool Visible(const RECT& device) const;
  bool LayerOn(int32_t layer) const { return drawing_.LayerState(layer) != 0; }
  int32_t Color(int32_t layer, int32_t color) const {
    return view_.InkOf(drawing_, layer, color, 0, toPrinter_);
  }

  const ZoomView& view_;
  const DXFEngine& e_;
  Drawing& drawing_;
  Canvas& canvas_;
  bool toPrinter_;
};

// The visibility test: the entity's device rectangle, made into its test rectangle, must
// meet the target's rectangle (0, 0, DeviceWidth, DeviceHeight).
bool LegacyPainter::Visible(const RECT& device) const {
  RECT test;
  if (!DXFEngine::MakeTestRect(device, test)) return false;
  int32_t left = std::min(test.left, test.right), right = std::max(test.left, test.right);
  int32_t top = std::min(test.top, test.bottom), bottom = std::max(test.top, test.bottom);
  return right > 0 && left < e_.DeviceWidth && bottom > 0 && top < e_.DeviceHeight && left < right &&
         top < bottom;
}

void LegacyPainter::Draw(const SeqEntry& entry) {
  switch (entry.Kind) {
    case kKindLine: {
      const LineEntity& l = RowOf(drawing_.Lines, entry.Index);
      if (!LayerOn(l.Layer)) return;
      RECT r{e_.CvtX(l.X1), e_.CvtY(l.Y1), e_.CvtX(l.X2), e_.CvtY(l.Y2)};
      int32_t color = Color(l.Layer, l.Color);
      if (Visible(r)) canvas_.DrawLine(r, 1, color, l.LineType);
      return;
    }
    case kKindPolySeg: {
      const PolySegment& s = RowOf(drawing_.PolySegs, entry.Index);
      if (!LayerOn(s.Layer)) return;
      RECT r{e_.CvtX(s.X1), e_.CvtY(s.Y1), e_.CvtX(s.X2), e_.CvtY(s.Y2)};
      int32_t color = Color(s.Layer, s.Color);
      int32_t penWidth = std::max<int32_t>(1, CInt(s.Width * e_.ViewScale));
      if (Visible(r)) canvas_.DrawLine(r, penWidth, color, 0);  // bulges are drawn straight
      return;
    }
    case kKindText: {
      TextEntity& t = RowOf(drawing_.Texts, entry.Index);
      if (LayerOn(t.Layer)) DrawTextEntity(t);
      return;
    }
    case kKindArc: {
      const ArcEntity& a = RowOf(drawing_.Arcs, entry.Index);
      if (LayerOn(a.Layer)) DrawArcEntity(a);
      return;
    }
    case kKindSolid: {
      const SolidEntity& s = RowOf(drawing_.Solids, entry.Index);
      if (!LayerOn(s.Layer)) return;
      std::array<DevicePoint, 4> points{{{e_.CvtX(s.X1), e_.CvtY(s.Y1)},
                                         {e_.CvtX(s.X2), e_.CvtY(s.Y2)},
                                         {e_.CvtX(s.X4), e_.CvtY(s.Y4)},
                                         {e_.CvtX(s.X3), e_.CvtY(s.Y3)}}};
      canvas_.DrawSolid(points, Color(s.Layer, s.Color));  // no visibility test
      return;
    }
    case kKindAttrib: {
      AttribEntity& a = RowOf(drawing_.Attribs, entry.Index);
      if (LayerOn(a.Text.Layer) && view_.AttributesVisible) DrawTextEntity(a.Text);
      return;
    }
    default:
      return;
  }
}

void LegacyPainter::DrawTextEntity(TextEntity& t) {
  int32_t height = e_.CvtTxtHt(t.Height, t.FontFactor);
  if (height == 50000 || height < 2) return;  // too small to read
  // A text many times larger than the picture shows nothing legible; its glyphs would
  // only cost memory.
  if (height > 16 * std::max(e_.DeviceWidth, e_.DeviceHeight)) return;
  int32_t left = e_.CvtX(t.X);
  int32_t baseline = e_.CvtY(t.Y);
  // The text and its font name are kept trimmed from the first redraw on.
  t.Text = std::string(Trim(t.Text));
  int32_t right = Plus(left, canvas_.CalcTxtWidth(t.Text));
  int32_t below = Plus(baseline, canvas_.CalcTxtHeight(t.Text));
  int32_t color = Color(t.Layer, t.Color);
  if (!Visible(RECT{left, below, right, baseline})) return;
  t.FontName = std::string(Trim(t.FontName));
  canvas_.DrawText(t.Text, left, baseline, height, float(t.Rotation), t.HorzJustify, color, t.FontName);
}

void LegacyPainter::DrawArcEntity(const ArcEntity& a) {
  const float cx = float(a.CenterX), cy = float(a.CenterY), radius = float(a.Radius);
  const float startAngle = float(a.StartAngle), endAngle = float(a.EndAngle);
  RECT bounds{e_.CvtX(cx - radius), e_.CvtY(cy + radius), e_.CvtX(cx + radius), e_.CvtY(cy - radius)};
  int32_t color = Color(a.Layer, a.Color);
  if (startAngle == endAngle) {
    if (Visible(bounds)) canvas_.DrawEllipse(bounds, color, a.LineType);
    return;
  }
  float a1 = float(startAngle * 2 * 3.14159 / 360);
  float a2 = float(endAngle * 2 * 3.14159 / 360);
  int32_t startX = e_.CvtX(CSng(radius * std::cos(a1) + cx));
  int32_t startY = e_.CvtY(CSng(radius * std::sin(a1) + cy));
  int32_t endX = e_.CvtX(CSng(radius * std::cos(a2) + cx));
  int32_t endY = e_.CvtY(CSng(radius * std::sin(a2) + cy));
  // Both ends on one pixel would draw a whole circle: such an arc is left out.
  if (std::abs(startX - endX) < 1 && std::abs(startY - endY) < 1) return;
  if (Visible(bounds)) canvas_.DrawArc(bounds, ArcEnds{startX, endY, endX, startY}, color, a.LineType);
}

}  // namespace

std::unique_ptr<EntityPainter> MakeLegacyPainter(const RedrawJob& job, Drawing& drawing, Canvas& canvas,
                                                 bool toPrinter) {
  return std::make_unique<LegacyPainter>(job, drawing, canvas, toPrinter);
}

}  // namespace dxfimport
