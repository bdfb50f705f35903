#pragma once

#include <QImage>
#include <QString>
#include <optional>
#include <string>

#include "dxf/model/geometry.h"
#include "geo/crs.h"
#include "render/engine.h"

namespace dxfimport {

// Where a picture lies on the drawing: the six numbers of an ESRI world file. A pixel's
// centre at column c, row r is at drawing (CentreX + c * PixelWidth + r * RotationX,
// CentreY + c * RotationY + r * PixelHeight).
struct PicturePlacement {
  double PixelWidth = 0;  // drawing units per pixel along a row
  double RotationY = 0;
  double RotationX = 0;
  double PixelHeight = 0;  // negative: rows run down the drawing
  double CentreX = 0;      // the centre of the top-left pixel
  double CentreY = 0;

  // The six lines of a world file, in its order, with full precision.
  std::string WorldFileText() const;
  // {"pixelWidth":..,"rotationY":..,"rotationX":..,"pixelHeight":..,"x":..,"y":..}
  std::string Json() const;
  // The placement in the coordinates `m` maps drawing coordinates to (a map's).
  PicturePlacement Through(const Affine& m) const;
};

// The placement of the picture the engine's viewport last drew.
PicturePlacement PlacementOf(const DXFEngine& engine);

// The world file beside a picture: .bpw for .bmp, .pgw for .png, in general the first and
// last letter of a three-letter extension followed by "w" (.tif, .tiff: .tfw); .wld
// for any other name.
QString WorldFilePath(const QString& picture);

// Writes the world file beside `picture` (atomically); false when it could not.
bool WriteWorldFile(const PicturePlacement& placement, const QString& picture);

// Writes the coordinate reference system beside `picture` (atomically) as GIS tools look
// for it: NAME.prj (WKT in ESRI's dialect) and PICTURE.aux.xml (GDAL's, WKT 2). False
// when either could not be written.
bool WriteCrsFiles(const Crs& crs, const QString& picture);

// The placement kept in the picture itself (a PNG writes it as a text chunk).
inline constexpr const char* kPlacementKey = "WorldFile";
void SetPlacementText(QImage& image, const PicturePlacement& placement);

// Millimetres per drawing unit for a $INSUNITS code (0 for none or an unknown code), and
// the code of a unit named on the command line (mm, cm, m, in, ft; 0 for another name).
double MillimetresPerUnit(int insUnits);
int UnitsCode(const std::string& name);
// Pixels per drawing unit at 1:`denominator` and `dpi` (0 when the unit is unknown).
inline double PixelsPerUnit(double denominator, double dpi, int insUnits) {
  return denominator > 0 ? dpi / 25.4 * MillimetresPerUnit(insUnits) / denominator : 0;
}

// Dots per metre for `dpi` (as BMP and PNG headers keep a resolution).
int DotsPerMetre(double dpi);
// Sets the picture's resolution (kept in BMP and PNG headers).
void SetDotsPerInch(QImage& image, double dpi);

}  // namespace dxfimport
