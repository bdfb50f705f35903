#include "geo/georeference.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <filesystem>
#include <fstream>

namespace dxfimport {
namespace {

// The text of a small file, or "" when it is not there (or is not small).
std::string SmallFile(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error) || std::filesystem::file_size(path, error) > (1u << 20))
    return {};
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

const char* CoordinateTypeName(int32_t type) {
  switch (type) {
    case 1:
      return "local grid";
    case 2:
      return "projected grid";
    case 3:
      return "geographic";
    default:
      return "unknown";
  }
}

}  // namespace

std::string PrjPath(const std::string& path) {
  return std::filesystem::path(path).replace_extension(".prj").string();
}

Georeference GeoreferenceOf(const GeoData& geo, const std::string& drawingPath, const std::string& crsOption,
                            std::string& problem) {
  Georeference out;
  problem.clear();
  if (geo.Present) out.ToSystem = geo.ToSystem(), out.FromGeoData = true;
  if (!crsOption.empty()) {
    const int32_t code = EpsgOfOption(crsOption);
    if (auto crs = CrsOfEpsg(code)) {
      out.System = *crs, out.CrsSource = "--crs";
      return out;
    }
    problem = "--crs " + crsOption + ": no coordinate reference system of that name (EPSG:n)";
  }
  if (geo.Present) {
    std::optional<Crs> crs = CrsOfEpsg(geo.EpsgCode());
    if (!crs) crs = CrsOfWkt(geo.Definition);
    if (crs) {
      out.System = *crs, out.CrsSource = "GEODATA";
      return out;
    }
  }
  if (!drawingPath.empty()) {
    const std::string prj = PrjPath(drawingPath);
    if (const std::string wkt = SmallFile(prj); !wkt.empty()) {
      if (auto crs = CrsOfWkt(wkt)) {
        out.System = *crs, out.CrsSource = std::filesystem::path(prj).filename().string();
      } else if (problem.empty()) {
        problem = prj + ": no coordinate reference system PROJ can read";
      }
    }
  }
  return out;
}

std::string Georeference::Json(const GeoData& geo) const {
  QJsonObject o;
  if (Known()) {
    o.insert("crs", QJsonObject{{"epsg", System.Epsg ? QJsonValue(System.Epsg) : QJsonValue()},
                                {"name", QString::fromStdString(System.Name)},
                                {"wkt", QString::fromStdString(System.Wkt)}});
    o.insert("source", QString::fromStdString(CrsSource));
  } else {
    o.insert("crs", QJsonValue());
    o.insert("source", QJsonValue());
  }
  const Affine& m = ToSystem;
  o.insert("transform", QJsonArray{QJsonArray{m.a, m.c, m.e}, QJsonArray{m.b, m.d, m.f}});
  o.insert("transformSource", FromGeoData ? "GEODATA" : "drawing coordinates");
  if (geo.Present) {
    o.insert("geodata", QJsonObject{{"coordinateType", CoordinateTypeName(geo.CoordinateType)},
                                    {"designPoint", QJsonArray{geo.Design.x, geo.Design.y}},
                                    {"referencePoint", QJsonArray{geo.Reference.x, geo.Reference.y}},
                                    {"unitScale", geo.UnitScale},
                                    {"northDirection", QJsonArray{geo.North.x, geo.North.y}},
                                    {"meshPoints", qint64(geo.MeshFrom.size())}});
  }
  return QJsonDocument(o).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace dxfimport
