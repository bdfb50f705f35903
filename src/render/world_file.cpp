#include "render/world_file.h"

#include <QFileInfo>
#include <QSaveFile>
#include <charconv>
#include <cmath>
#include <iterator>

namespace dxfimport {
namespace {

// The shortest text that reads back as the same double.
std::string Exact(double v) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, v).ptr);
}

}  // namespace

std::string PicturePlacement::WorldFileText() const {
  std::string text;
  for (double v : {PixelWidth, RotationY, RotationX, PixelHeight, CentreX, CentreY}) text += Exact(v) + "\n";
  return text;
}

std::string PicturePlacement::Json() const {
  return "{\"pixelWidth\":" + Exact(PixelWidth) + ",\"rotationY\":" + Exact(RotationY) +
         ",\"rotationX\":" + Exact(RotationX) + ",\"pixelHeight\":" + Exact(PixelHeight) +
         ",\"x\":" + Exact(CentreX) + ",\"y\":" + Exact(CentreY) + "}";
}

// A drawing point maps to device (x - OriginX) * ViewScale and DeviceHeight - (y -
// OriginY) * ViewScale, and lights the pixel that value rounds to: pixel c is centred on
// device value c.
PicturePlacement PlacementOf(const DXFEngine& e) {
  PicturePlacement p;
  if (!(e.ViewScale > 0)) return p;
  p.PixelWidth = 1 / e.ViewScale;
  p.PixelHeight = -1 / e.ViewScale;
  p.CentreX = e.OriginX;
  p.CentreY = e.OriginY + double(e.DeviceHeight) / e.ViewScale;
  return p;
}

QString WorldFilePath(const QString& picture) {
  const QFileInfo info(picture);
  const QString suffix = info.suffix();
  QString world = "wld";
  if (suffix.size() == 3)
    world = QString(suffix[0]) + suffix[2] + (suffix[2].isUpper() ? "W" : "w");
  else if (suffix.compare("tiff", Qt::CaseInsensitive) == 0)
    world = suffix[0] == 't' ? "tfw" : "TFW";
  const QString base = suffix.isEmpty() ? picture : picture.left(picture.size() - suffix.size() - 1);
  return base + "." + world;
}

namespace {

bool WriteText(const QString& path, const std::string& text) {
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return false;
  if (file.write(text.data(), qint64(text.size())) != qint64(text.size())) {
    file.cancelWriting();
    return false;
  }
  return file.commit();
}

}  // namespace

PicturePlacement PicturePlacement::Through(const Affine& m) const {
  PicturePlacement p;
  p.PixelWidth = m.a * PixelWidth + m.c * RotationY;
  p.RotationY = m.b * PixelWidth + m.d * RotationY;
  p.RotationX = m.a * RotationX + m.c * PixelHeight;
  p.PixelHeight = m.b * RotationX + m.d * PixelHeight;
  const PointD centre = m.Apply({CentreX, CentreY});
  p.CentreX = centre.x, p.CentreY = centre.y;
  return p;
}

bool WriteWorldFile(const PicturePlacement& placement, const QString& picture) {
  return WriteText(WorldFilePath(picture), placement.WorldFileText());
}

bool WriteCrsFiles(const Crs& crs, const QString& picture) {
  const QFileInfo info(picture);
  const QString base =
      info.suffix().isEmpty() ? picture : picture.left(picture.size() - info.suffix().size() - 1);
  const std::string aux = "<PAMDataset>\n  <SRS dataAxisToSRSAxisMapping=\"1,2\">" +
                          QString::fromStdString(crs.Wkt).toHtmlEscaped().toStdString() +
                          "</SRS>\n</PAMDataset>\n";
  return WriteText(base + ".prj", crs.EsriWkt.empty() ? crs.Wkt : crs.EsriWkt) &&
         WriteText(picture + ".aux.xml", aux);
}

double MillimetresPerUnit(int insUnits) {
  static constexpr double kMillimetres[] = {0,
                                            25.4,
                                            304.8,
                                            1609344,
                                            1,
                                            10,
                                            1000,
                                            1e6,
                                            25.4e-6,
                                            0.0254,
                                            914.4,
                                            1e-7,
                                            1e-6,
                                            1e-3,
                                            100,
                                            1e4,
                                            1e5,
                                            1e12,
                                            1.495978707e14,
                                            9.4607304725808e18,
                                            3.0856775814913673e19,
                                            304.8006096012192,
                                            25.40005080010160,
                                            914.4018288036576,
                                            1609347.218694437};
  return insUnits >= 0 && insUnits < int(std::size(kMillimetres)) ? kMillimetres[insUnits] : 0;
}

int UnitsCode(const std::string& name) {
  if (name == "in") return 1;
  if (name == "ft") return 2;
  if (name == "mm") return 4;
  if (name == "cm") return 5;
  if (name == "m") return 6;
  return 0;
}

void SetPlacementText(QImage& image, const PicturePlacement& placement) {
  image.setText(kPlacementKey, QString::fromStdString(placement.WorldFileText()));
}

int DotsPerMetre(double dpi) { return int(std::lround(dpi / 0.0254)); }

void SetDotsPerInch(QImage& image, double dpi) {
  if (!(dpi > 0)) return;
  const int perMetre = DotsPerMetre(dpi);
  image.setDotsPerMeterX(perMetre);
  image.setDotsPerMeterY(perMetre);
}

}  // namespace dxfimport
