#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>

#include <map>
#include <string>

#include "dxf/records.h"
#include "render/engine.h"

namespace dxfimport {

// Draws the texts of the modern profile: the height is the height of a capital in
// drawing units, the point is placed by the horizontal (72) and vertical (73)
// justification, the text turned by its rotation. Glyphs are laid out at one reference
// size per face and scaled, so that sizes and advances are exact at every zoom.
class TextPainter {
 public:
  explicit TextPainter(QPainter& painter) : painter_(painter) {}

  void Draw(const TextEntity& text, const DXFEngine& engine, QColor color, const QRectF& view);

 private:
  struct Face {
    QFont font;
    double capHeight = 0, descent = 0;  // at the reference size
  };
  const Face& FaceOf(const std::string& name);

  QPainter& painter_;
  std::map<std::string, Face> faces_;
};

}  // namespace dxfimport
