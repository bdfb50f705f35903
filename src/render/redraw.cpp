#include "render/redraw.h"

#include <QFontMetrics>
#include <QPagedPaintDevice>
#include <QPainter>
#include <cmath>
#include <memory>

#include "render/redraw_job.h"
#include "support/log.h"
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

ZoomState::ZoomState(Drawing& drawing) : drawing_(drawing) {}
ZoomState::~ZoomState() = default;

int32_t ZoomState::EntityColor(int32_t layer, int32_t color, bool toPrinter) const {
  return InkOf(drawing_, layer, color, 0, toPrinter);
}

bool ZoomState::Zoom(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter) {
  // One redraw at a time: its entry lists, its second thread's work and its transform are
  // the running redraw's until it ends.
  if (inProgress_) {
    LogCritical("Zoom: a redraw was asked for while one ran; it is not drawn");
    return false;
  }
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

bool ZoomState::PlaceView(const ZoomRect& window, int32_t width, int32_t height) {
  Engine.DeviceWidth = width;
  Engine.DeviceHeight = height;
  return drawing_.Rules().InPrecision([&]<class Real>(Real) { return FitWindow<Real>(window); });
}

bool ZoomState::DrawPass(const ZoomRect& window, Surface& surface, QPaintDevice* metafile, bool toPrinter) {
  QPaintDevice* device = surface.PaintDevice();
  int32_t lineHeight = 0, width = surface.ScaleWidth(), height = surface.ScaleHeight();
  if (metafile) {
    device = metafile;
  } else if (toPrinter) {
    if (!Printer) throw RunTimeError(kErrInvalidCall);
    device = Printer;
    QFontMetrics metrics(QFont("Arial", 10), Printer);
    lineHeight = metrics.height() + metrics.descent();
    width = CInt(Printer->width() - 10);
    height = CInt(Printer->height() - 2 * lineHeight);
  }
  if (!PlaceView(window, width, height)) return false;

  QPainter painter(device);
  Canvas canvas(painter);
  // The surface's own picture may be drawn in two bands at once; a metafile or a printer
  // page is drawn in one go.
  RedrawJob job(*this, Caches, drawing_, KeepDrawing);
  if (drawing_.Rules().IndexedRedraw)
    job.DrawIndexed(canvas, surface, metafile || toPrinter ? nullptr : dynamic_cast<QImage*>(device),
                    toPrinter);
  else
    job.DrawEvery(canvas, surface, toPrinter);
  KeepOutcome(job);
  if (toPrinter) AddPrintBorder(canvas, lineHeight);
  painter.end();
  surface.Refresh();
  return true;
}

// A strip is drawn by a job of its own over the view as placed (RedrawJob::DrawStrip).
bool ZoomState::DrawStrip(QImage& strip, int32_t top, QColor background) {
  try {
    RedrawJob(*this, Caches, drawing_).DrawStrip(strip, top, background);
    return true;
  } catch (const RunTimeError& e) {
    ReportError("Zoom", "DXFINVB", e.text(), e.number());
    return false;
  }
}

void ZoomState::KeepOutcome(const RedrawJob& job) {
  Interrupted = job.Interrupted;
  DrewInBands = job.DrewInBands;
}

}  // namespace dxfimport
