// Zooming about a point, the previous-zoom history and the printed page's border.
#include <QDate>
#include <QLocale>

#include "render/redraw.h"
#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

constexpr const char* kModule = "Dxfin275";

}  // namespace

bool ZoomState::StationaryZoom(float x, float y, int16_t percent, Surface& surface) {
  try {
    const ZoomRect& current = Engine.CurrentZoom;
    if (Engine.ViewScale == 0 || percent == 0) throw RunTimeError(kErrDivisionByZero);
    double cx = x / Engine.ViewScale + current.left;
    double cy = current.bottom - (y - Engine.DeviceHeight) / Engine.ViewScale;
    double newWidth = 100.0 / percent * (current.right - current.left);
    double newHeight = 100.0 / percent * (current.top - current.bottom);
    double fx = double(x) / surface.ScaleWidth();
    double fy = double(y) / surface.ScaleHeight();
    // The window is kept in the profile's precision.
    const ProfileRules& rules = drawing_.Rules();
    auto keep = [&rules](double v) { return rules.Held(v); };
    NextZoom.left = keep(cx - fx * newWidth);
    NextZoom.right = keep((1 - fx) * newWidth + cx);
    NextZoom.top = keep(newHeight * fy + cy);
    NextZoom.bottom = keep(cy - (1 - fy) * newHeight);
    surface.Cls();
    AddToPrevZoomStack(NextZoom);
    if (NextZoom.left - NextZoom.right != 0 && NextZoom.bottom - NextZoom.top != 0) {
      Zoom(NextZoom, surface);
      surface.Refresh();
    }
    // The window as computed, over the aspect-corrected one (the same while the surface
    // keeps its size).
    Engine.CurrentZoom = NextZoom;
  } catch (const RunTimeError& e) {
    ReportError("StationaryZoom", kModule, e.text(), e.number());
  }
  return true;
}

namespace {

template <class Real>
ZoomRect PixelWindow(const DXFEngine& e, int minX, int minY, int maxX, int maxY, int height) {
  const Real scale = Real(e.ViewScale), h = Real(height);
  const Real left = Real(e.CurrentZoom.left), bottom = Real(e.CurrentZoom.bottom);
  return {minX / scale + left, (h - minY) / scale + bottom, maxX / scale + left, (h - maxY) / scale + bottom};
}

}  // namespace

ZoomRect ZoomState::WindowOfPixels(int minX, int minY, int maxX, int maxY, int height) const {
  return drawing_.Rules().InPrecision(
      [&]<class Real>(Real) { return PixelWindow<Real>(Engine, minX, minY, maxX, maxY, height); });
}

ZoomRect ZoomedWindow(const ZoomRect& z, PointD p, double factor) {
  if (!(factor > 0)) return z;
  return {p.x - (p.x - z.left) / factor, p.y + (z.top - p.y) / factor, p.x + (z.right - p.x) / factor,
          p.y - (p.y - z.bottom) / factor};
}

ZoomRect PannedWindow(const ZoomRect& z, double scale, double dx, double dy) {
  if (!(scale > 0)) return z;
  const double ux = dx / scale, uy = dy / scale;
  return {z.left - ux, z.top + uy, z.right - ux, z.bottom + uy};
}

ZoomRect ZoomState::ZoomedAbout(double x, double y, double factor) const {
  if (Engine.ViewScale == 0) return Engine.CurrentZoom;
  return ZoomedWindow(Engine.CurrentZoom, DrawingPoint(x, y), factor);
}

ZoomRect ZoomState::Panned(double dx, double dy) const {
  if (Engine.ViewScale == 0) return Engine.CurrentZoom;
  return PannedWindow(Engine.CurrentZoom, Engine.ViewScale, dx, dy);
}

// A frame around the drawing area and, in the two text lines below it, the caption
// "File name: <file>" and today's date.
void ZoomState::AddPrintBorder(Canvas& canvas, int32_t lineHeight) {
  try {
    const int32_t w = Engine.DeviceWidth, h = Engine.DeviceHeight;
    const int32_t bottom = h + 2 * lineHeight - 1;
    canvas.DrawLine({0, 0, w, 0}, 1, 0, 0);
    canvas.DrawLine({w, 0, w, bottom}, 1, 0, 0);
    canvas.DrawLine({w, bottom, 0, bottom}, 1, 0, 0);
    canvas.DrawLine({0, bottom, 0, 0}, 1, 0, 0);
    canvas.DrawSolid({{{0, h}, {w, h}, {w, h + 2}, {0, h + 2}}}, 0);
    QString date = QLocale(QLocale::English).toString(QDate::currentDate(), QStringLiteral("MMMM, d, yyyy"));
    std::string caption = "File name: " + FileName + "    " + date.toStdString();
    canvas.DrawText(caption, lineHeight / 2, h + lineHeight + lineHeight / 2, lineHeight, 0, 0, 0, "Arial");
  } catch (const RunTimeError& e) {
    ReportError("AddPrintBorder", kModule, e.text(), e.number());
  }
}

}  // namespace dxfimport
