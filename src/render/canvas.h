#pragma once

#include <QBrush>
#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPen>
#include <QPolygon>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "render/engine.h"

namespace dxfimport {

// A device point.
struct DevicePoint {
  int32_t x = 0, y = 0;
};

// The two ends of an arc as the arc primitive takes them: start x, end y, end x, start y.
struct ArcEnds {
  int32_t StartX = 0, EndY = 0, EndX = 0, StartY = 0;
};

// The drawing primitives over one painter, in device pixels. Each primitive makes its own
// pen, brush or font, draws, and leaves the canvas's current pen, brush and font as they
// were: the solid outline, the ellipse interior and the text measurements use those
// current objects (by default a black one-pixel pen, a hollow brush and the default font).
// Colours are 0x00BBGGRR; pen styles 0..4 are solid, dash, dot, dash-dot, dash-dot-dot.
// A failure is reported through the error routine (module "dxfengvb").
class Canvas {
 public:
  explicit Canvas(QPainter& painter);

  // A line from (x1, y1) to (x2, y2) of the given width, its last pixel not drawn.
  void DrawLine(const RECT& ends, int32_t width, int32_t color, int32_t style);
  // An arc of the ellipse in `bounds` (either corner order), counter-clockwise on the
  // screen from the radial through its start point to the radial through its end point.
  void DrawArc(const RECT& bounds, const ArcEnds& ends, int32_t color, int32_t style, int32_t width = 1);
  // The ellipse in `bounds`, filled with the current brush.
  void DrawEllipse(const RECT& bounds, int32_t color, int32_t style);
  // The four corners as a polygon outlined with the current pen and brush, then filled
  // (alternate rule) with the colour.
  void DrawSolid(const std::array<DevicePoint, 4>& corners, int32_t color);
  // Polygons filled by the alternate rule (inner loops are holes), without an outline.
  void DrawHatch(const std::vector<QPolygon>& loops, int32_t color);
  // A text with its baseline at y; justification 1 and 4 centre on x, 2 ends at x, any
  // other starts at x; rotation in whole degrees (ties to even), counter-clockwise; the
  // character cell is `height` pixels high; weight 100.
  void DrawText(const std::string& text, int32_t x, int32_t y, int32_t height, float rotation,
                int32_t justify, int32_t color, const std::string& face);
  // The measured text's height and width with the current font; deliberately crossed:
  // CalcTxtWidth gives the height and CalcTxtHeight the width. Empty text measures 0.
  int16_t CalcTxtWidth(const std::string& text);
  int16_t CalcTxtHeight(const std::string& text);

  // A drawing-unit pattern (dash > 0, gap < 0, dot 0) in pixels at `scale` pixels per
  // unit, as Qt's alternating dash and gap lengths; empty when it would be too fine to see.
  static QVector<qreal> PixelPattern(const std::vector<double>& elements, double scale);

  // The current objects of the device, as its owner sets them.
  void SetCurrentPen(const QPen& pen) { currentPen_ = pen; }
  void SetCurrentBrush(const QBrush& brush) { currentBrush_ = brush; }
  void SetCurrentFont(const QFont& font) {
    currentFont_ = font;
    currentMetrics_.reset();
  }
  const QFont& currentFont() const { return currentFont_; }
  QPainter& painter() { return painter_; }

  static QColor ToQColor(int32_t rgb);
  static Qt::PenStyle ToPenStyle(int32_t style);
  // The escapement in tenths of a degree: the rotation rounded to whole degrees first.
  static int32_t Escapement(float rotation);
  // The font of a text cell `height` pixels high in `face`.
  static QFont CellFont(const std::string& face, int32_t height);

 private:
  QSize Extent(const std::string& text);
  // Puts the pen for (colour, width, style) on the painter. Each primitive asks for its
  // own pen; one equal to the pen already on the painter is not built again.
  void UsePen(int32_t color, int32_t width, int32_t style);
  void ForgetPen() { penKey_ = {-1, -1, -1}; }

  struct PenKey {
    int32_t color, width, style;
    bool operator==(const PenKey&) const = default;
  };
  PenKey penKey_{-1, -1, -1};

  QPen MakePen(int32_t color, int32_t width, int32_t style) const;

  QPainter& painter_;
  QPen currentPen_;
  QBrush currentBrush_;
  QFont currentFont_;
  std::optional<QFontMetrics> currentMetrics_;  // of currentFont_ on the painter's device
};

}  // namespace dxfimport
