#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dxf/model/geometry.h"

namespace dxfimport {

// Model space's geographic location (the GEODATA object, modern profile): how drawing
// coordinates map to those of a coordinate reference system.
struct GeoData {
  bool Present = false;
  int32_t CoordinateType = 0;  // 70: 0 unknown, 1 local grid, 2 projected grid, 3 geographic
  PointD Design;               // 10/20: a point of the drawing
  PointD Reference;            // 11/21: where it lies in the system's coordinates
  double UnitScale = 1;        // 40: metres per drawing unit
  int32_t Units = 0;           // 91: the drawing unit ($INSUNITS codes)
  PointD North{0, 1};          // 12/22: the drawing's direction of grid north
  int32_t ScaleMethod = 1;     // 95: 1 none, 2 the user's factor (141), 3 grid, 4 prismoidal
  double ScaleFactor = 1;      // 141
  std::string Definition;      // 303 ... 301: the system's definition (XML or WKT)
  // The mesh of a custom transform: drawing-side points (13/23) and where they lie
  // (14/24), pair by pair.
  std::vector<PointD> MeshFrom, MeshTo;

  // The map from drawing coordinates to the system's: the design point lands on the
  // reference point, grid north up, lengths in metres (times the user's scale factor when
  // the drawing says to use it). Identity when there is no GEODATA.
  Affine ToSystem() const;
  // The EPSG code the definition names (an XML alias in the EPSG namespace, or a WKT
  // AUTHORITY/ID at its end), or 0.
  int32_t EpsgCode() const;
};

// The EPSG code that a coordinate system definition names (XML of the MapGuide schema
// or WKT 1 or 2), or 0.
int32_t EpsgCodeIn(const std::string& definition);

}  // namespace dxfimport
