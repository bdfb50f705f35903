#pragma once

#include <QColor>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "dxf/model/drawing.h"
#include "render/canvas.h"
#include "render/surface.h"
#include "render/zoom_view.h"

class QElapsedTimer;
class QImage;

namespace dxfimport {

// One redraw: everything one call of Zoom or DrawStrip needs, its own until it ends. Its
// transform is a copy of the view's as placed for it, so nothing done to the view while
// it runs reaches its picture; its entry lists and its second thread's work are its own.
// It reads the drawing (the legacy painter notes the measures of its texts in their rows),
// the view's options and the drawing's caches.
class RedrawJob {
 public:
  RedrawJob(const ZoomView& view, DrawingCaches& caches, Drawing& drawing,
            std::function<bool()> keepDrawing = {});

  const DXFEngine Engine;  // the transform the picture is drawn with
  const ZoomView& View;    // the options
  DrawingCaches& Caches;
  bool Interrupted = false;  // KeepDrawing said to stop
  bool DrewInBands = false;  // the picture was drawn in two bands of rows at once

  // Every entry in file order, the picture refreshed every 0.5 % of them.
  void DrawEvery(Canvas& canvas, Surface& surface, bool toPrinter);
  // The entries the spatial index finds in the view (every entry when the view shows a
  // quarter of the drawing or more), in two bands at once when `picture` (the surface's
  // own picture, else null) is worth it.
  void DrawIndexed(Canvas& canvas, Surface& surface, QImage* picture, bool toPrinter);
  // Draws the device rows from `top` on into `strip`, as ZoomState::DrawStrip says.
  void DrawStrip(QImage& strip, int32_t top, QColor background);

 private:
  std::unique_ptr<EntityPainter> MakePainter(Canvas& canvas, QColor background, bool toPrinter);
  // Whether KeepDrawing, asked at most every 50 ms, says to stop (Interrupted is then set).
  bool StopAsked(QElapsedTimer& sinceAsked);
  void DrawInBands(Canvas& canvas, Surface& surface, QImage& picture);
  void DrawListed(EntityPainter& painter, Surface& surface, const std::vector<SeqEntry>& entries);
  // Draws `entries` into `strip`, the device rows from `top` on; ends early when `stop`
  // is set. Safe beside the drawing of the upper band on another thread.
  void DrawRows(QImage& strip, int32_t top, QColor background, const std::vector<SeqEntry>& entries,
                const std::atomic<bool>& stop);
  // The drawing-unit box of the device rows [top, bottom), grown by what pens reach.
  Box RowsBox(int32_t top, int32_t bottom) const;
  // Fetches the entries of the bands above and below device row `middle` into
  // upperEntries_ and lowerEntries_.
  void FetchBands(int32_t middle);
  // Fetches the entries the index finds in `box` into `entries`.
  void FetchVisible(const Box& box, std::vector<SeqEntry>& entries);

  Drawing& drawing_;
  std::function<bool()> keepDrawing_;
  std::vector<int32_t> visible_;        // the positions of the entries the index found last
  std::vector<uint64_t> queryMarks_;    // the index query's working memory
  std::vector<SeqEntry> upperEntries_;  // the entries to draw (the upper band's)
  std::vector<SeqEntry> lowerEntries_;  // the lower band's
};

// The painters (legacy_painter.cpp, modern_painter.cpp), drawing with a job's transform.
std::unique_ptr<EntityPainter> MakeLegacyPainter(const RedrawJob& job, Drawing& drawing, Canvas& canvas,
                                                 bool toPrinter);
std::unique_ptr<EntityPainter> MakeModernPainter(const RedrawJob& job, const Drawing& drawing, Canvas& canvas,
                                                 QColor background, bool toPrinter);

}  // namespace dxfimport
