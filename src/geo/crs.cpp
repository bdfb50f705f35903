#include "geo/crs.h"

#include <proj.h>

#include <cctype>
#include <cstdlib>
#include <memory>

namespace dxfimport {
namespace {

struct ContextDeleter {
  void operator()(PJ_CONTEXT* c) const { proj_context_destroy(c); }
};
struct ObjectDeleter {
  void operator()(PJ* p) const { proj_destroy(p); }
};
using Context = std::unique_ptr<PJ_CONTEXT, ContextDeleter>;
using Object = std::unique_ptr<PJ, ObjectDeleter>;

// A context that keeps PROJ's messages to itself.
Context NewContext() {
  Context context(proj_context_create());
  if (context) proj_log_level(context.get(), PJ_LOG_NONE);
  return context;
}

std::string Text(const char* text) { return text ? text : ""; }

Crs Describe(PJ_CONTEXT* context, PJ* crs) {
  Crs out;
  out.Name = Text(proj_get_name(crs));
  const PJ_TYPE type = proj_get_type(crs);
  out.Geographic = type == PJ_TYPE_GEOGRAPHIC_2D_CRS || type == PJ_TYPE_GEOGRAPHIC_3D_CRS;
  const char* options[] = {"MULTILINE=NO", nullptr};
  out.Wkt = Text(proj_as_wkt(context, crs, PJ_WKT2_2019, options));
  out.EsriWkt = Text(proj_as_wkt(context, crs, PJ_WKT1_ESRI, options));
  if (Text(proj_get_id_auth_name(crs, 0)) == "EPSG")
    out.Epsg = int32_t(std::atol(Text(proj_get_id_code(crs, 0)).c_str()));
  return out;
}

}  // namespace

std::optional<Crs> CrsOfEpsg(int32_t code) {
  if (code <= 0) return std::nullopt;
  Context context = NewContext();
  if (!context) return std::nullopt;
  const std::string text = std::to_string(code);
  Object crs(proj_create_from_database(context.get(), "EPSG", text.c_str(), PJ_CATEGORY_CRS, 0, nullptr));
  if (!crs) return std::nullopt;
  Crs out = Describe(context.get(), crs.get());
  out.Epsg = code;
  return out;
}

std::optional<Crs> CrsOfWkt(const std::string& wkt) {
  if (wkt.empty() || wkt.size() > (1u << 20)) return std::nullopt;
  Context context = NewContext();
  if (!context) return std::nullopt;
  Object crs(proj_create(context.get(), wkt.c_str()));
  if (!crs || !proj_is_crs(crs.get())) return std::nullopt;
  Crs out = Describe(context.get(), crs.get());
  if (out.Epsg == 0) {
    // A .prj in ESRI's dialect names no code: the one PROJ finds certainly the same.
    int* confidence = nullptr;
    PJ_OBJ_LIST* matches = proj_identify(context.get(), crs.get(), "EPSG", nullptr, &confidence);
    if (matches && proj_list_get_count(matches) > 0 && confidence && confidence[0] >= 90) {
      Object best(proj_list_get(context.get(), matches, 0));
      if (best) out.Epsg = int32_t(std::atol(Text(proj_get_id_code(best.get(), 0)).c_str()));
    }
    proj_int_list_destroy(confidence);
    proj_list_destroy(matches);
  }
  return out;
}

int32_t EpsgOfOption(const std::string& text) {
  std::string digits = text;
  if (digits.size() > 5 && std::toupper(static_cast<unsigned char>(digits[0])) == 'E' &&
      std::toupper(static_cast<unsigned char>(digits[1])) == 'P' &&
      std::toupper(static_cast<unsigned char>(digits[2])) == 'S' &&
      std::toupper(static_cast<unsigned char>(digits[3])) == 'G' && digits[4] == ':')
    digits = digits.substr(5);
  if (digits.empty() || digits.size() > 9) return 0;
  for (char c : digits)
    if (!std::isdigit(static_cast<unsigned char>(c))) return 0;
  return int32_t(std::atol(digits.c_str()));
}

}  // namespace dxfimport
