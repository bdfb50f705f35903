#include "render/text_painter.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace dxfimport {
namespace {

constexpr int kReferencePixels = 64;

}  // namespace

const TextPainter::Face& TextPainter::FaceOf(const std::string& name) {
  auto found = faces_.find(name);
  if (found != faces_.end()) return found->second;
  Face face;
  face.font = QFont(QString::fromStdString(name.empty() ? "Arial" : name));
  face.font.setPixelSize(kReferencePixels);
  face.font.setHintingPreference(QFont::PreferNoHinting);
  QFontMetricsF metrics(face.font);
  face.capHeight = metrics.capHeight() > 0 ? metrics.capHeight() : metrics.ascent() * 0.7;
  face.descent = metrics.descent();
  return faces_.emplace(name, face).first->second;
}

void TextPainter::Draw(const TextEntity& t, const DXFEngine& e, QColor color, const QRectF& view) {
  const double cap = std::abs(t.Height) * e.ViewScale;
  if (!(cap >= 1.5) || cap > 16.0 * std::max(e.DeviceWidth, e.DeviceHeight) || t.Text.empty()) return;
  const Face& face = FaceOf(t.FontName);
  const QString text = QString::fromStdString(t.Text);
  QFont font = face.font;
  font.setUnderline(t.Underline != 0);
  const QFontMetricsF metrics(font);
  const double width = metrics.horizontalAdvance(text);
  const double scale = cap / face.capHeight;
  double dx = 0, dy = 0;
  if (t.HorzJustify == 1 || t.HorzJustify == 4) dx = -width / 2;
  else if (t.HorzJustify == 2) dx = -width;
  switch (t.VertJustify) {
    case 1: dy = -face.descent; break;
    case 2: dy = face.capHeight / 2; break;
    case 3: dy = face.capHeight; break;
    default: dy = t.HorzJustify == 4 ? face.capHeight / 2 : 0; break;
  }
  const QPointF at(e.DeviceX(t.X), e.DeviceY(t.Y));
  QTransform placement;
  placement.translate(at.x(), at.y());
  placement.rotate(-t.Rotation);
  placement.scale(scale, scale);
  const QRectF box(dx, dy - face.capHeight * 1.3, width, face.capHeight * 1.3 + face.descent * 1.5);
  if (!placement.mapRect(box).intersects(view)) return;
  painter_.save();
  painter_.setRenderHint(QPainter::Antialiasing, true);
  painter_.setRenderHint(QPainter::TextAntialiasing, true);
  painter_.setTransform(placement, true);
  painter_.setFont(font);
  painter_.setPen(color);
  painter_.drawText(QPointF(dx, dy), text);
  painter_.restore();
}

}  // namespace dxfimport
