#include "render/redraw_job.h"

#include <unistd.h>

#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QThreadPool>
#include <atomic>
#include <cmath>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace dxfimport {
namespace {

// The redraw's second thread. It lives as long as the process: both threads draw the
// texts' fonts, and Qt tears down a thread's font data when the thread ends. A child
// process forked from this one has none of its parent's threads and makes its own.
QThreadPool& SecondThreadPool() {
  static std::mutex making;
  static QThreadPool* pool = nullptr;
  static pid_t owner = 0;
  std::lock_guard held(making);
  if (!pool || owner != getpid()) {
    pool = new QThreadPool;  // kept to the end: a pool's destructor would wait for a thread that may be gone
    pool->setMaxThreadCount(1);
    pool->setExpiryTimeout(-1);
    owner = getpid();
  }
  return *pool;
}

// Whether texts are at most an eighth of the entries. The threads drawing a picture's
// bands draw texts one at a time (they share the fonts): a list of mostly texts is drawn
// faster by one thread alone.
bool FewTexts(const std::vector<SeqEntry>& entries) {
  std::size_t texts = 0;
  for (const SeqEntry& entry : entries)
    texts += entry.Kind == kKindText || entry.Kind == kKindAttrib || entry.Kind == kKindMText;
  return texts <= entries.size() / 8;
}

// The hand-over of a job to the second thread goes through Qt's thread pool, whose locks
// ThreadSanitizer does not see (Qt is not built with it): the hand-over is told to it,
// so that what the window's thread wrote before it counts as written before the job.
#if defined(__SANITIZE_THREAD__)
char handOver;
void HandOver() { __tsan_release(&handOver); }
void TakeOver() { __tsan_acquire(&handOver); }
#else
void HandOver() {}
void TakeOver() {}
#endif

// A job on the redraw's second thread, told to stop and waited for on every way out.
class SecondThread {
 public:
  explicit SecondThread(std::function<void(const std::atomic<bool>& stop)> job) {
    auto promise = std::make_shared<std::promise<void>>();
    done_ = promise->get_future();
    std::function<void()> work = [this, promise, job = std::move(job)] {
      TakeOver();
      try {
        job(stop_);
        promise->set_value();
      } catch (...) {
        promise->set_exception(std::current_exception());
      }
    };
    HandOver();
    SecondThreadPool().start(std::move(work));
  }
  ~SecondThread() {
    Stop();
    if (done_.valid()) done_.wait();
  }
  void Stop() { stop_ = true; }
  bool Finished(int milliseconds) const {
    return done_.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
  }
  // Waits for the job; an exception it threw is thrown here.
  void Join() { done_.get(); }

 private:
  std::atomic<bool> stop_{false};
  std::future<void> done_;
};

}  // namespace

RedrawJob::RedrawJob(const ZoomView& view, DrawingCaches& caches, Drawing& drawing,
                     std::function<bool()> keepDrawing)
    : Engine(view.Engine),
      View(view),
      Caches(caches),
      drawing_(drawing),
      keepDrawing_(std::move(keepDrawing)) {}

std::unique_ptr<EntityPainter> RedrawJob::MakePainter(Canvas& canvas, QColor background, bool toPrinter) {
  if (drawing_.Rules().LegacyPainter) return MakeLegacyPainter(*this, drawing_, canvas, toPrinter);
  return MakeModernPainter(*this, drawing_, canvas, background, toPrinter);
}

bool RedrawJob::StopAsked(QElapsedTimer& sinceAsked) {
  if (!keepDrawing_ || sinceAsked.elapsed() < 50) return false;
  sinceAsked.restart();
  Interrupted = !keepDrawing_();
  return Interrupted;
}

// Every entry in file order, the picture refreshed every 0.5 % of them.
void RedrawJob::DrawEvery(Canvas& canvas, Surface& surface, bool toPrinter) {
  std::unique_ptr<EntityPainter> painter = MakePainter(canvas, surface.BackColor(), toPrinter);
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
    painter->Draw(drawing_.DrawSeq[std::size_t(i - 1)]);
  }
}

// The entries in file order, only those the spatial index finds in the view when the
// view shows less than a quarter of the drawing. A long list, not mostly texts, on the
// surface's picture is drawn in two bands of rows at once: the upper by this thread
// straight onto the picture, the lower by a second one into a picture of its own rows,
// copied in at the end. Each band is drawn as a strip is (the same pixels as one pass),
// from the entries found in its rows.
void RedrawJob::DrawIndexed(Canvas& canvas, Surface& surface, QImage* picture, bool toPrinter) {
  const DXFEngine& e = Engine;
  const ZoomRect& z = e.CurrentZoom;
  const ZoomRect& all = View.ExtentsZoom;
  const double viewArea = (z.right - z.left) * (z.top - z.bottom);
  const double allArea = std::abs((all.right - all.left) * (all.top - all.bottom));
  const bool part = std::isfinite(viewArea) && allArea > 0 && viewArea < allArea / 4;
  if (part) FetchVisible(RowsBox(0, e.DeviceHeight), upperEntries_);
  const std::vector<SeqEntry>& entries = part ? upperEntries_ : drawing_.DrawSeq;
  constexpr std::size_t kBandsFrom = 8192;
  DrewInBands = picture && picture->depth() == 32 && entries.size() >= kBandsFrom && e.DeviceHeight >= 2 &&
                std::thread::hardware_concurrency() > 1 && FewTexts(entries);
  Interrupted = false;
  if (!DrewInBands) {
    std::unique_ptr<EntityPainter> kinds = MakePainter(canvas, surface.BackColor(), toPrinter);
    DrawListed(*kinds, surface, entries);
    return;
  }
  DrawInBands(canvas, surface, *picture);
}

void RedrawJob::DrawInBands(Canvas& canvas, Surface& surface, QImage& picture) {
  const DXFEngine& e = Engine;
  const int32_t middle = e.DeviceHeight / 2;
  FetchBands(middle);
  QImage lower(e.DeviceWidth, e.DeviceHeight - middle, picture.format());
  SecondThread drawsLower([&](const std::atomic<bool>& stop) {
    DrawRows(lower, middle, surface.BackColor(), lowerEntries_, stop);
  });
  QPainter& painter = canvas.painter();
  painter.save();
  painter.setClipRect(QRect(0, 0, e.DeviceWidth, middle));
  DrawListed(*MakePainter(canvas, surface.BackColor(), false), surface, upperEntries_);
  painter.restore();
  // The lower band may take longer: the window keeps running its messages meanwhile.
  if (Interrupted) drawsLower.Stop();
  QElapsedTimer sinceAsked;
  sinceAsked.start();
  while (!drawsLower.Finished(20))
    if (StopAsked(sinceAsked)) drawsLower.Stop();
  drawsLower.Join();
  painter.save();
  painter.resetTransform();
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.drawImage(0, middle, lower);
  painter.restore();
}

// The entries in order, what is drawn shown every 100 ms.
void RedrawJob::DrawListed(EntityPainter& painter, Surface& surface, const std::vector<SeqEntry>& entries) {
  QElapsedTimer sinceShown, sinceAsked;
  sinceShown.start();
  sinceAsked.start();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if ((i & 255) == 255) {
      if (sinceShown.elapsed() >= 100) {
        surface.Refresh();
        sinceShown.restart();
      }
      if (StopAsked(sinceAsked)) return;
    }
    painter.Draw(entries[i]);
  }
}

Box RedrawJob::RowsBox(int32_t top, int32_t bottom) const {
  const DXFEngine& e = Engine;
  // Pens reach beyond the boxes by half their width (line weights up to 2.11 mm).
  const double pen = View.Display.LineWeights ? 2.11 / 25.4 * View.Display.Dpi : 1;
  const double margin = (2 + pen) / e.ViewScale;
  const PointD high = DrawingPointOf(e, 0, top), low = DrawingPointOf(e, e.DeviceWidth, bottom);
  return {high.x - margin, low.y - margin, low.x + margin, high.y + margin};
}

void RedrawJob::FetchVisible(const Box& box, std::vector<SeqEntry>& entries) {
  Caches.IndexOf(drawing_).Query(box, visible_, queryMarks_);
  // The entries and their rows lie far apart in memory: fetched all at once here, their
  // loads overlap instead of stalling the draw one by one.
  entries.clear();
  entries.reserve(visible_.size());
  for (int32_t at : visible_) {
    const SeqEntry& entry = drawing_.DrawSeq[std::size_t(at)];
    entries.push_back(entry);
    VisitRow(drawing_, entry, [](const auto& row) { __builtin_prefetch(&row); });
  }
}

// The entries of the bands above and below device row `middle`: from the index when there
// is one, else (a view of the whole drawing before any view of a part of it) from every
// entry's box, which costs a fraction of building the index.
void RedrawJob::FetchBands(int32_t middle) {
  const Box upper = RowsBox(0, middle), lower = RowsBox(middle, Engine.DeviceHeight);
  if (Caches.IndexCurrent(drawing_)) {
    FetchVisible(upper, upperEntries_);
    FetchVisible(lower, lowerEntries_);
    return;
  }
  upperEntries_.clear();
  lowerEntries_.clear();
  for (const SeqEntry& entry : drawing_.DrawSeq) {
    const Box box = SpatialIndex::EntryBox(drawing_, entry);
    if (box.Empty() || box.Meets(upper)) upperEntries_.push_back(entry);
    if (box.Empty() || box.Meets(lower)) lowerEntries_.push_back(entry);
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
void RedrawJob::DrawStrip(QImage& strip, int32_t top, QColor background) {
  const bool indexed = drawing_.Rules().IndexedRedraw;
  if (indexed) FetchVisible(RowsBox(top, top + strip.height()), upperEntries_);
  DrawRows(strip, top, background, indexed ? upperEntries_ : drawing_.DrawSeq, std::atomic<bool>{false});
}

void RedrawJob::DrawRows(QImage& strip, int32_t top, QColor background, const std::vector<SeqEntry>& entries,
                         const std::atomic<bool>& stop) {
  const int32_t width = Engine.DeviceWidth, height = Engine.DeviceHeight;
  strip.fill(background);
  const int32_t deviceTop = height <= kRasterSide ? 0 : top;
  const int32_t deviceHeight = std::min(height - deviceTop, kRasterSide);
  for (int32_t left = 0; left < width; left += kRasterSide) {
    const int32_t columns = std::min(width - left, kRasterSide);
    const uintptr_t first = reinterpret_cast<uintptr_t>(strip.bits()) + uintptr_t(left) * 4 -
                            uintptr_t(top - deviceTop) * uintptr_t(strip.bytesPerLine());
    QImage device(reinterpret_cast<uchar*>(first), columns, deviceHeight, strip.bytesPerLine(),
                  strip.format());
    QPainter painter(&device);
    painter.translate(-left, -deviceTop);
    painter.setClipRect(QRect(left, top, columns, strip.height()));
    Canvas canvas(painter);
    std::unique_ptr<EntityPainter> kinds = MakePainter(canvas, background, false);
    for (std::size_t i = 0; i < entries.size() && !stop; ++i) kinds->Draw(entries[i]);
  }
}

}  // namespace dxfimport
