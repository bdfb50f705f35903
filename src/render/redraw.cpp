#include "render/redraw.h"

#include <QFontMetrics>
#include <QPagedPaintDevice>
#include <QElapsedTimer>
#include <QPainter>

#include <atomic>
#include <cmath>
#include <future>
#include <thread>

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

bool ZoomState::PlaceView(const ZoomRect& window, int32_t width, int32_t height) {
  Engine.DeviceWidth = width;
  Engine.DeviceHeight = height;
  return drawing_.Rules().SinglePrecision ? FitWindow<float>(window) : FitWindow<double>(window);
}

std::unique_ptr<EntityPainter> ZoomState::MakePainter(Canvas& canvas, QColor background, bool toPrinter) {
  if (drawing_.Rules().LegacyPainter) return MakeLegacyPainter(*this, drawing_, canvas, toPrinter);
  return MakeModernPainter(*this, drawing_, canvas, background, toPrinter);
}

bool ZoomState::StopAsked(QElapsedTimer& sinceAsked) {
  if (!KeepDrawing || sinceAsked.elapsed() < 50) return false;
  sinceAsked.restart();
  Interrupted = !KeepDrawing();
  return Interrupted;
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
  std::unique_ptr<EntityPainter> painterOfKinds = MakePainter(canvas, surface.BackColor(), toPrinter);
  // Onto the surface's own picture the second half of a long redraw may be drawn beside
  // the first; a metafile or a printer page is drawn in one go.
  if (drawing_.Rules().IndexedRedraw) DrawIndexed(*painterOfKinds, surface, metafile || toPrinter ? nullptr : &painter);
  else DrawEvery(*painterOfKinds, surface);
  painterOfKinds.reset();
  if (toPrinter) AddPrintBorder(canvas, lineHeight);
  painter.end();
  surface.Refresh();
  return true;
}

// Every entry in file order, the picture refreshed every 0.5 % of them.
void ZoomState::DrawEvery(EntityPainter& painter, Surface& surface) {
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
      if (StopAsked(sinceAsked)) return;
    }
    painter.Draw(drawing_.DrawSeq[std::size_t(i - 1)]);
  }
}

// The entries in file order, only those the spatial index finds in the view when the
// view shows less than a quarter of the drawing; what is drawn is shown every 100 ms. A
// long list whose second half draws only opaque, unclipped ink is drawn in two halves
// at once, the second on a transparent picture of its own laid over the first: the same
// pixels, in about half the time on two processors.
void ZoomState::DrawIndexed(EntityPainter& painter, Surface& surface, QPainter* composite) {
  const DXFEngine& e = Engine;
  const ZoomRect& z = e.CurrentZoom;
  const ZoomRect& all = ExtentsZoom;
  const double viewArea = (z.right - z.left) * (z.top - z.bottom);
  const double allArea = std::abs((all.right - all.left) * (all.top - all.bottom));
  const bool part = std::isfinite(viewArea) && allArea > 0 && viewArea < allArea / 4;
  if (part) FetchVisible(RowsBox(0, e.DeviceHeight));
  const std::vector<SeqEntry>& entries = part ? visibleEntries_ : drawing_.DrawSeq;
  const std::size_t count = entries.size();
  constexpr std::size_t kHalvesFrom = 8192;
  std::size_t split = count;
  if (composite && count >= kHalvesFrom && std::thread::hardware_concurrency() > 1 &&
      OpaqueAndUnclipped(entries, count / 2, count))
    split = count / 2;

  DrewInHalves = split < count;
  QImage second;
  std::atomic<bool> stop{false};
  std::future<void> worker;
  if (split < count) {
    second = QImage(e.DeviceWidth, e.DeviceHeight, QImage::Format_ARGB32_Premultiplied);
    second.fill(Qt::transparent);
    worker = std::async(std::launch::async, [&] {
      QPainter onSecond(&second);
      Canvas canvas(onSecond);
      std::unique_ptr<EntityPainter> kinds = MakeModernPainter(*this, drawing_, canvas, surface.BackColor(), false);
      for (std::size_t i = split; i < count && !stop; ++i) kinds->Draw(entries[i]);
    });
  }
  Interrupted = false;
  QElapsedTimer sinceShown, sinceAsked;
  sinceShown.start();
  sinceAsked.start();
  for (std::size_t i = 0; i < split; ++i) {
    if ((i & 255) == 255) {
      if (sinceShown.elapsed() >= 100) {
        surface.Refresh();
        sinceShown.restart();
      }
      if (StopAsked(sinceAsked)) break;
    }
    painter.Draw(entries[i]);
  }
  if (worker.valid()) {
    stop = Interrupted;
    worker.get();
    if (!Interrupted) composite->drawImage(0, 0, second);
  }
}

Box ZoomState::RowsBox(int32_t top, int32_t bottom) const {
  const DXFEngine& e = Engine;
  // Pens reach beyond the boxes by half their width (line weights up to 2.11 mm).
  const double pen = Display.LineWeights ? 2.11 / 25.4 * Display.Dpi : 1;
  const double margin = (2 + pen) / e.ViewScale;
  const PointD high = DrawingPoint(0, top), low = DrawingPoint(e.DeviceWidth, bottom);
  return {high.x - margin, low.y - margin, low.x + margin, high.y + margin};
}

void ZoomState::FetchVisible(const Box& box) {
  if (!Index || Index->generation() != drawing_.Generation()) Index = std::make_unique<SpatialIndex>(drawing_);
  Index->Query(box, visible_);
  // The entries and their rows lie far apart in memory: fetched all at once here, their
  // loads overlap instead of stalling the draw one by one.
  visibleEntries_.clear();
  visibleEntries_.reserve(visible_.size());
  for (int32_t at : visible_) {
    const SeqEntry& entry = drawing_.DrawSeq[std::size_t(at)];
    visibleEntries_.push_back(entry);
    VisitRow(drawing_, entry, [](const auto& row) { __builtin_prefetch(&row); });
  }
}

// The rasterizer draws within 32767 pixels of a device's origin.
constexpr int32_t kRasterSide = 32767;

// The strip is drawn through a paint device that is the whole picture (up to the
// rasterizer's reach) laid over the strip's memory, the strip's rows as its own, with a
// clip to those rows: lines are then cut at the picture's edges, as in a picture drawn
// whole, and so take the same pixels. Only the clipped rows are ever touched. A picture
// wider or higher than the rasterizer's reach is drawn through devices that start at the
// strip's top and at every 32767th column.
bool ZoomState::DrawStrip(QImage& strip, int32_t top, QColor background) {
  const int32_t width = Engine.DeviceWidth, height = Engine.DeviceHeight;
  try {
    strip.fill(background);
    const bool indexed = drawing_.Rules().IndexedRedraw;
    if (indexed) FetchVisible(RowsBox(top, top + strip.height()));
    const int32_t deviceTop = height <= kRasterSide ? 0 : top;
    const int32_t deviceHeight = std::min(height - deviceTop, kRasterSide);
    for (int32_t left = 0; left < width; left += kRasterSide) {
      const int32_t columns = std::min(width - left, kRasterSide);
      const uintptr_t first = reinterpret_cast<uintptr_t>(strip.bits()) + uintptr_t(left) * 4 -
                              uintptr_t(top - deviceTop) * uintptr_t(strip.bytesPerLine());
      QImage device(reinterpret_cast<uchar*>(first), columns, deviceHeight, strip.bytesPerLine(), strip.format());
      QPainter painter(&device);
      painter.translate(-left, -deviceTop);
      painter.setClipRect(QRect(left, top, columns, strip.height()));
      Canvas canvas(painter);
      std::unique_ptr<EntityPainter> kinds = MakePainter(canvas, background, false);
      for (const SeqEntry& entry : indexed ? visibleEntries_ : drawing_.DrawSeq) kinds->Draw(entry);
    }
    return true;
  } catch (const RunTimeError& e) {
    ReportError("Zoom", "DXFINVB", e.text(), e.number());
    return false;
  }
}

// Whether entries [from, to) draw only opaque ink and no clip: no text big enough to be
// drawn (its edges are smoothed), no hatch pattern (a dense one is a half-covering tint),
// no viewport clip, and no smoothed lines.
bool ZoomState::OpaqueAndUnclipped(const std::vector<SeqEntry>& entries, std::size_t from, std::size_t to) const {
  if (Display.Antialias) return false;
  const double scale = Engine.ViewScale;
  for (std::size_t i = from; i < to; ++i) {
    const SeqEntry& entry = entries[i];
    bool opaque = true;
    if (entry.Kind == kKindClip) return false;
    VisitRow(drawing_, entry, [&](const auto& row) {
      using Row = std::decay_t<decltype(row)>;
      if constexpr (std::is_same_v<Row, TextEntity>) {
        opaque = row.HorzJustify != 3 && std::abs(row.Height) * scale < 1.5;
      } else if constexpr (std::is_same_v<Row, AttribEntity>) {
        opaque = row.Text.HorzJustify != 3 && std::abs(row.Text.Height) * scale < 1.5;
      } else if constexpr (std::is_same_v<Row, MTextEntity>) {
        opaque = std::abs(row.Height) * scale < 1.5;
      } else if constexpr (std::is_same_v<Row, HatchEntity>) {
        opaque = row.Filling != HatchEntity::Fill::Pattern;
      }
    });
    if (!opaque) return false;
  }
  return true;
}

}  // namespace dxfimport
