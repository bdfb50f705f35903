#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QLineF>
#include <QRectF>
#include <QTransform>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "dxf/model/drawing.h"
#include "dxf/model/mtext.h"

namespace dxfimport {

// A text laid out in its own frame: x along the baseline from the anchor point, y up, in
// drawing units. Glyphs are shaped once at a reference size; drawing maps the frame to
// the device.
struct TextLayout {
  struct Run {
    QGlyphRun glyphs;       // positions in reference pixels, y down, baseline at y = 0
    QPointF origin;         // the run's baseline start in the frame
    double scale = 1;       // frame units per reference pixel, vertically
    double widthScale = 1;  // horizontal stretch over `scale` (width factor)
    double shear = 0;       // tan of the oblique angle
    int32_t color = 0;      // a colour value; 0 the text's own
  };
  struct Stroke {  // underlines, overlines, strike-throughs, fraction bars
    QLineF line;
    int32_t color = 0;
  };
  std::vector<Run> runs;
  std::vector<Stroke> strokes;
  QRectF box;                   // what the text covers, in the frame
  std::optional<QRectF> fill;   // a background behind it
  int32_t fillColor = 0;        // its colour value; kForeground's opposite for the background
  bool fillBackground = false;  // filled with the picture's background colour
  double height = 0;            // the text height, for leaving out unreadably small text
  // The frame: anchor, rotation and mirroring in drawing coordinates.
  double x = 0, y = 0, rotation = 0;
  bool backward = false, upsideDown = false;
};

// Lays out the texts of a drawing (TEXT, ATTRIB, MTEXT of the modern profile), each once
// per load: the layouts are kept until the drawing is loaded again.
class TextLayouts {
 public:
  friend class TextComposer;
  const TextLayout& Of(const TextEntity& text, int32_t kind, int32_t row, const Drawing& drawing);
  const TextLayout& Of(const MTextEntity& text, int32_t row, const Drawing& drawing);

  // The transform from a layout's frame to drawing coordinates.
  static QTransform FrameTransform(const TextLayout& layout);
  // Held while texts are laid out (Of holds it) and while their glyphs are drawn: the
  // threads drawing a picture's bands share the layouts and their fonts.
  std::mutex& Fonts() { return fonts_; }

  struct Face {
    QFont font;
    double cap = 1, ascent = 1, descent = 0;  // reference pixels
  };

 private:
  const Face& FaceOf(const std::string& family, bool bold, bool italic, double tracking);
  void Forget(const Drawing& drawing);
  TextLayout LayOutText(const TextEntity& text, const Drawing& drawing);
  TextLayout LayOutMText(const MTextEntity& text, const Drawing& drawing);

  uint64_t generation_ = 0;
  const Drawing* drawing_ = nullptr;
  // Per kind (TEXT, ATTRIB, MTEXT) and row.
  std::unique_ptr<TextLayout>& Slot(int32_t kind, int32_t row);
  std::vector<std::unique_ptr<TextLayout>> layouts_[3];
  std::map<std::string, Face> faces_;
  std::mutex fonts_;
};

}  // namespace dxfimport
