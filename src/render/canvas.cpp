#include "render/canvas.h"

#include <QFontMetrics>
#include <QPainterPath>
#include <QPolygon>
#include <cmath>
#include <map>

#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

constexpr const char* kEngineModule = "dxfengvb";

template <class F>
void Reported(const char* procedure, F&& f) {
  RunReported(procedure, kEngineModule, std::forward<F>(f));
}

// The rectangle a figure fits in, with the right and bottom edges outside it.
QRectF FigureRect(const RECT& r) {
  double left = std::min(r.left, r.right), right = std::max(r.left, r.right);
  double top = std::min(r.top, r.bottom), bottom = std::max(r.top, r.bottom);
  return QRectF(left, top, std::max(0.0, right - left - 1), std::max(0.0, bottom - top - 1));
}

// Screen angle in degrees (counter-clockwise, y down) of a point seen from a centre.
double ScreenAngle(QPointF centre, double x, double y) {
  return std::atan2(-(y - centre.y()), x - centre.x()) * 180.0 / M_PI;
}

}  // namespace

QPen Canvas::MakePen(int32_t color, int32_t width, int32_t style) const {
  if (width > 1) {
    // A wide pen is always solid, with round ends, as wide pens have always been.
    return QPen(QBrush(ToQColor(color)), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  }
  return QPen(QBrush(ToQColor(color)), 0, ToPenStyle(style), Qt::FlatCap);
}

QVector<qreal> Canvas::PixelPattern(const std::vector<double>& elements, double scale) {
  // Runs of dashes and of gaps; neighbours of one kind merge.
  std::vector<std::pair<bool, double>> runs;
  double total = 0;
  for (double element : elements) {
    bool dash = element >= 0;
    double pixels = element == 0 ? 1.0 : std::abs(element) * scale;
    total += pixels;
    if (!runs.empty() && runs.back().first == dash)
      runs.back().second += pixels;
    else
      runs.emplace_back(dash, pixels);
  }
  if (runs.size() < 2 || total < 3 || !std::isfinite(total)) return {};
  // Qt takes dash, gap, dash, gap, ...: the pattern repeats, so a leading gap moves to the
  // end and a trailing dash joins the leading one.
  if (!runs.front().first) {
    runs.push_back(runs.front());
    runs.erase(runs.begin());
  }
  if (runs.back().first) {
    runs.front().second += runs.back().second;
    runs.pop_back();
  }
  QVector<qreal> pattern;
  for (const auto& run : runs) pattern.append(std::max(1.0, run.second));
  if (pattern.size() % 2 == 1) pattern.append(1);
  return pattern;
}

Canvas::Canvas(QPainter& painter)
    : painter_(painter),
      currentPen_(Qt::black, 0),
      currentBrush_(Qt::NoBrush),
      currentFont_(CellFont("Arial", 16)) {
  painter_.setRenderHint(QPainter::Antialiasing, false);
  painter_.setRenderHint(QPainter::TextAntialiasing, false);
}

QColor Canvas::ToQColor(int32_t rgb) { return QColor(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF); }

Qt::PenStyle Canvas::ToPenStyle(int32_t style) {
  switch (style) {
    case 1:
      return Qt::DashLine;
    case 2:
      return Qt::DotLine;
    case 3:
      return Qt::DashDotLine;
    case 4:
      return Qt::DashDotDotLine;
    default:
      return Qt::SolidLine;
  }
}

int32_t Canvas::Escapement(float rotation) {
  int32_t degrees = CLng(rotation);
  int32_t tenths = 0;
  if (__builtin_mul_overflow(degrees, 10, &tenths)) throw RunTimeError(kErrOverflow);
  return tenths;
}

QFont Canvas::CellFont(const std::string& face, int32_t height) {
  // A character cell of `height` pixels: the font's em is the cell less its leading, so
  // the pixel size is scaled by the face's em-to-cell ratio (measured once per face).
  static std::map<std::string, double> emPerCell;
  QFont font(QString::fromStdString(face));
  font.setWeight(QFont::Thin);
  font.setStyleStrategy(QFont::NoAntialias);
  auto it = emPerCell.find(face);
  if (it == emPerCell.end()) {
    font.setPixelSize(1000);
    QFontMetrics m(font);
    it = emPerCell.emplace(face, 1000.0 / std::max(1, m.ascent() + m.descent())).first;
  }
  font.setPixelSize(std::max(1, int(std::lround(height * it->second))));
  return font;
}

void Canvas::UsePen(int32_t color, int32_t width, int32_t style) {
  PenKey key{color, std::max(width, 1), width > 1 ? 0 : style};
  if (key == penKey_) return;
  painter_.setPen(MakePen(color, width, style));
  penKey_ = key;
}

void Canvas::DrawLine(const RECT& ends, int32_t width, int32_t color, int32_t style) {
  Reported("DrawLine", [&] {
    UsePen(color, width, style);
    painter_.drawLine(QLine(ends.left, ends.top, ends.right, ends.bottom));
  });
}

void Canvas::DrawArc(const RECT& bounds, const ArcEnds& ends, int32_t color, int32_t style, int32_t width) {
  Reported("DrawArc", [&] {
    QRectF rect = FigureRect(bounds);
    QPointF centre = rect.center();
    double start = ScreenAngle(centre, ends.StartX, ends.StartY);
    double end = ScreenAngle(centre, ends.EndX, ends.EndY);
    double span = std::fmod(end - start + 720.0, 360.0);
    if (span == 0) span = 360;  // both ends on one radial: the whole ellipse
    UsePen(color, width, style);
    painter_.setBrush(Qt::NoBrush);
    painter_.drawArc(rect, int(std::lround(start * 16)), int(std::lround(span * 16)));
  });
}

void Canvas::DrawEllipse(const RECT& bounds, int32_t color, int32_t style) {
  Reported("DrawEllipse", [&] {
    UsePen(color, 1, style);
    painter_.setBrush(currentBrush_);
    painter_.drawEllipse(FigureRect(bounds));
  });
}

void Canvas::DrawSolid(const std::array<DevicePoint, 4>& corners, int32_t color) {
  Reported("DrawSolid", [&] {
    QPolygon polygon(4);
    for (int i = 0; i < 4; ++i) polygon.setPoint(i, corners[std::size_t(i)].x, corners[std::size_t(i)].y);
    ForgetPen();
    painter_.setPen(currentPen_);
    painter_.setBrush(currentBrush_);
    painter_.drawPolygon(polygon);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(ToQColor(color));
    painter_.drawPolygon(polygon, Qt::OddEvenFill);
  });
}

void Canvas::DrawHatch(const std::vector<QPolygon>& loops, int32_t color) {
  Reported("DrawHatch", [&] {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (const QPolygon& loop : loops) path.addPolygon(QPolygonF(loop));
    ForgetPen();
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(ToQColor(color));
    painter_.drawPath(path);
  });
}

void Canvas::DrawText(const std::string& text, int32_t x, int32_t y, int32_t height, float rotation,
                      int32_t justify, int32_t color, const std::string& face) {
  Reported("DrawText", [&] {
    int32_t escapement = Escapement(rotation);
    QFont font = CellFont(face, height);
    QString qtext = QString::fromStdString(text);
    QFontMetrics metrics(font, painter_.device());
    double width = metrics.horizontalAdvance(qtext);
    double dx = (justify == 1 || justify == 4) ? -width / 2 : justify == 2 ? -width : 0;
    QTransform saved = painter_.transform();
    painter_.translate(x, y);
    painter_.rotate(-escapement / 10.0);
    painter_.setFont(font);
    ForgetPen();
    painter_.setPen(ToQColor(color));
    painter_.drawText(QPointF(dx, 0), qtext);
    painter_.setTransform(saved);
  });
}

QSize Canvas::Extent(const std::string& text) {
  if (text.empty()) return {0, 0};
  if (!currentMetrics_) currentMetrics_.emplace(currentFont_, painter_.device());
  return {currentMetrics_->horizontalAdvance(QString::fromStdString(text)), currentMetrics_->height()};
}

int16_t Canvas::CalcTxtWidth(const std::string& text) {
  int16_t result = 0;
  Reported("CalcTxtWidth", [&] { result = CInt(Extent(text).height()); });
  return result;
}

int16_t Canvas::CalcTxtHeight(const std::string& text) {
  int16_t result = 0;
  Reported("CalcTxtHeight", [&] { result = CInt(Extent(text).width()); });
  return result;
}

}  // namespace dxfimport
