#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dxfimport {

// A coordinate reference system as GIS tools take it.
struct Crs {
  int32_t Epsg = 0;         // 0: none known
  std::string Name;         // as the definition names it
  std::string Wkt;          // WKT 2 (what GDAL writes in .aux.xml)
  std::string EsriWkt;      // WKT 1 in the ESRI dialect (a .prj)
  bool Geographic = false;  // latitude and longitude (else projected)
  bool Known() const { return !Wkt.empty(); }
};

// The system of an EPSG code, from PROJ's database; nothing for a code it does not hold.
std::optional<Crs> CrsOfEpsg(int32_t code);
// The system a WKT text (1 or 2, ESRI's dialect too) describes, its EPSG code when PROJ
// identifies it with certainty; nothing when PROJ cannot read it.
std::optional<Crs> CrsOfWkt(const std::string& wkt);
// The code of "EPSG:27700" (case aside) or "27700"; 0 for anything else.
int32_t EpsgOfOption(const std::string& text);

}  // namespace dxfimport
