#pragma once

#include <string>

#include "dxf/model/geolocation.h"
#include "geo/crs.h"

namespace dxfimport {

// Where a drawing lies on a map: its coordinate reference system, the map from drawing
// coordinates to the system's, and where each came from.
struct Georeference {
  Crs System;
  std::string CrsSource;  // "--crs", "GEODATA", "NAME.prj", or "" when no system is known
  Affine ToSystem;        // identity: the drawing is drawn in the system's coordinates
  bool FromGeoData = false;

  bool Known() const { return !CrsSource.empty(); }
  // {"crs":{"epsg":..,"name":..,"wkt":..},"source":..,"transform":[[a,c,e],[b,d,f]],
  //  "transformSource":..} (the rows map drawing x, y, 1 to system x and y).
  std::string Json(const GeoData& geo) const;
};

// The drawing's georeference. `crsOption` (EPSG:n) wins over the GEODATA's system, which
// wins over a .prj of the drawing's name beside it; the map comes from GEODATA, or is the
// identity. `problem` says why a system named could not be used (empty when none was).
Georeference GeoreferenceOf(const GeoData& geo, const std::string& drawingPath, const std::string& crsOption,
                            std::string& problem);

// The same .prj name beside a file: NAME.prj for NAME.dxf or NAME.png.
std::string PrjPath(const std::string& path);

}  // namespace dxfimport
