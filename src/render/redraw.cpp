#include "render/redraw.h"

#include <QFontMetrics>
#include <QPagedPaintDevice>
#include <QElapsedTimer>
#include <QPainter>

#include <cmath>

#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/texts.h"

namespace dxfimport {
namespace {

// The hourglass while a redraw runs, restored on every way out.
class BusyPointer {
 public:
  explicit BusyPointer(Surface& s) : surface_(s) { surface_.SetBusy(true); }
  ~BusyPointer() { surface_.SetBusy(false); }

 private:
  Surface& surface_;
};

template <class Real>
Real Divide(Real a, Real b) {
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
  struct InProgress {
    bool& flag;
    explicit InProgress(bool& f) : flag(f) { flag = true; }
    ~InProgress() { flag = false; }
  } inProgress(inProgress_);
  try {
    return DrawPass(window, surface, metafile, toPrinter);
  } catch (const RunTimeError& e) {
    ReportError("Zoom", "DXFINVB", e.text(), e.number());
    return false;
  }
}

// Grows the window to the target's aspect (upwards or to the right) and sets the
// viewport, computing in `Real` (single precision for the legacy profile). False with
// message 1052 when the window has no width.
template <class Real>
bool ZoomState::FitWindow(const ZoomRect& window) {
  DXFEngine& e = Engine;
  Real width = std::abs(Real(window.right) - Real(window.left));
  Real height = std::abs(Real(window.top) - Real(window.bottom));
  if (width == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1052));
    return false;
  }
  ZoomRect view = window;
  const Real ratio = Divide(width, height);
  const Real aspect = Divide(Real(e.DeviceWidth), Real(e.DeviceHeight));
  e.ViewAspect = aspect;
  if (aspect < ratio) {
    height = width / aspect;
    view.top = Real(view.bottom) + height;
  } else {
    width = height * aspect;
    view.right = Real(view.left) + width;
  }
  e.CurrentZoom = view;
  e.ViewScale = Divide(Real(e.DeviceWidth), width);
  e.Initialize(e.DeviceHeight, view.left, view.bottom, e.ViewScale, 0);
  return true;
}

std::unique_ptr<EntityPainter> ZoomState::MakePainter(Canvas& canvas, const Surface& surface, bool toPrinter) {
  if (drawing_.Rules().LegacyPainter) return MakeLegacyPainter(*this, drawing_, canvas, toPrinter);
  return MakeModernPainter(*this, drawing_, canvas, surface.BackColor(), toPrinter);
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
  const bool fitted = drawing_.Rules().SinglePrecision ? FitWindow<float>(window) : FitWindow<double>(window);
  if (!fitted) return false;

  QPainter painter(device);
  Canvas canvas(painter);
  std::unique_ptr<EntityPainter> painterOfKinds = MakePainter(canvas, surface, toPrinter);
  const int32_t count = drawing_.SeqCount();
  const float step = 50000.0f / float(count);
  float threshold = step;
  Interrupted = false;
  QElapsedTimer sinceAsked;
  sinceAsked.start();
  for (int32_t i = 1; i <= count; ++i) {
    float percent = float(i) / float(count) * 100.0f;
    if (percent >= threshold) {
      threshold += step;
      surface.Refresh();
      if (KeepDrawing && sinceAsked.elapsed() >= 50) {
        sinceAsked.restart();
        if (!KeepDrawing()) {
          Interrupted = true;
          break;
        }
      }
    }
    painterOfKinds->Draw(drawing_.DrawSeq[std::size_t(i - 1)]);
  }
  painterOfKinds.reset();
  if (toPrinter) AddPrintBorder(canvas, lineHeight);
  painter.end();
  surface.Refresh();
  return true;
}

}  // namespace dxfimport
