#include "render/import_check.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <set>

#include "dxf/model/load_report.h"
#include "dxf/model/text_styles.h"
#include "render/world_file.h"

namespace dxfimport {
namespace {

using Level = ImportCheck::Level;

std::string Number(double v) { return QString::number(v, 'f', 0).toStdString(); }

const char* UnitName(int code) {
  static constexpr const char* kNames[] = {"unitless",
                                           "inches",
                                           "feet",
                                           "miles",
                                           "millimetres",
                                           "centimetres",
                                           "metres",
                                           "kilometres",
                                           "microinches",
                                           "mils",
                                           "yards",
                                           "angstroms",
                                           "nanometres",
                                           "microns",
                                           "decimetres",
                                           "decametres",
                                           "hectometres",
                                           "gigametres",
                                           "astronomical units",
                                           "light years",
                                           "parsecs"};
  return code >= 0 && code < int(std::size(kNames)) ? kNames[code] : "unknown";
}

// How many rows are on layers that are on (what the picture can show).
int64_t VisibleRows(const Drawing& d) {
  int64_t visible = 0;
  for (const SeqEntry& entry : d.DrawSeq) {
    VisitRow(d, entry, [&](const auto& row) {
      int32_t layer = 0;
      if constexpr (requires { row.Text.Layer; })
        layer = row.Text.Layer;
      else
        layer = row.Layer;
      visible += layer < 1 || layer > d.LayerCount() || d.Layers[std::size_t(layer - 1)].IsOn != 0;
    });
  }
  return visible;
}

void CheckUnits(const Drawing& d, ImportCheck& check) {
  if (MillimetresPerUnit(d.InsUnits) > 0) {
    check.Reasons.push_back({Level::Note, std::string("units declared: ") + UnitName(d.InsUnits) +
                                              " ($INSUNITS " + std::to_string(d.InsUnits) + ")"});
  } else if (d.Geo.Present && MillimetresPerUnit(d.Geo.Units) > 0) {
    check.Reasons.push_back({Level::Note, std::string("units guessed: ") + UnitName(d.Geo.Units) +
                                              ", from the drawing's geographic location (GEODATA)"});
  } else {
    check.Reasons.push_back(
        {Level::Warning, "units not declared ($INSUNITS): the host must be told the drawing's unit"});
  }
}

void CheckContent(const Drawing& d, const LoadOutcome& outcome, ImportCheck& check) {
  if (d.SeqCount() == 0) {
    check.Reasons.push_back({Level::Problem, "nothing to draw: model space and the layouts are empty"});
    return;
  }
  if (VisibleRows(d) == 0)
    check.Reasons.push_back({Level::Problem, "nothing to draw: every layer that holds something is off"});
  if (outcome.ModelSpaceEmpty)
    check.Reasons.push_back(
        {Level::Warning, "model space is empty: the layout " + outcome.Layout + " is drawn"});
  if (!outcome.Complete && !outcome.Cancelled)
    check.Reasons.push_back({Level::Warning, "the drawing was read only up to line " +
                                                 std::to_string(outcome.StopLine) + " (" + outcome.StoppedIn +
                                                 ")"});
  const double width = d.ExtMaxX - d.ExtMinX, height = d.ExtMaxY - d.ExtMinY;
  const double centreX = (d.ExtMinX + d.ExtMaxX) / 2, centreY = (d.ExtMinY + d.ExtMaxY) / 2;
  const double away = std::hypot(centreX, centreY), size = std::max({width, height, 1e-9});
  if (away > 1e5 && away > 1000 * size)
    check.Reasons.push_back({Level::Warning, "the content lies far from the origin (its middle at " +
                                                 Number(centreX) + ", " + Number(centreY) + ", " +
                                                 Number(size) +
                                                 " across): a host that keeps "
                                                 "single precision loses its detail"});
}

void CheckReport(const LoadReport& report, ImportCheck& check) {
  for (const ReportEntry& e : report.Entries()) {
    if (e.Drawn) continue;
    const bool missing = e.Kind.starts_with("image missing") || e.Kind.starts_with("underlay missing") ||
                         e.Kind.starts_with("underlay page not read") ||
                         e.Kind.starts_with("external reference missing") ||
                         e.Kind.starts_with("external reference is a DWG");
    const bool notDrawn = e.Kind.find("not drawn") != std::string::npos;
    const bool budget = e.Kind.find("over the entity budget") != std::string::npos;
    if (missing || notDrawn || budget)
      check.Reasons.push_back(
          {Level::Warning, e.Kind + (e.Count > 1 ? " (" + CountText(e.Count) + ")" : "")});
  }
}

// Fonts of the styles that texts use: SHX fonts are drawn in a stand-in face; a TrueType
// family this machine does not have is drawn in the face fontconfig puts in its place,
// which keeps the text's length when it is a metric-compatible one (Liberation for Arial,
// Times New Roman, Courier New).
void CheckFonts(const Drawing& d, ImportCheck& check) {
  std::set<int32_t> used;
  for (const TextEntity& t : d.Texts) used.insert(t.Style);
  for (const MTextEntity& t : d.MTexts) used.insert(t.Style);
  for (const AttribEntity& a : d.Attribs) used.insert(a.Text.Style);
  std::set<std::string> shx, alike, other;
  const QStringList families = QFontDatabase::families();
  for (int32_t row : used) {
    if (row < 1 || row > int32_t(d.TextStyles.size())) continue;
    const TextStyle& style = d.TextStyles[std::size_t(row - 1)];
    const QString face = QString::fromStdString(style.Face);
    if (style.Stroke) {
      if (!style.Font.empty()) shx.insert(style.Font);
      continue;
    }
    if (face.isEmpty() || families.contains(face, Qt::CaseInsensitive)) continue;
    const QString drawnIn = QFontInfo(QFont(face)).family();
    const std::string named =
        style.Face + (style.Font.empty() ? "" : " (" + style.Font + ")") + " as " + drawnIn.toStdString();
    (drawnIn.startsWith("Liberation") ? alike : other).insert(named);
  }
  auto joined = [](const std::set<std::string>& names) {
    std::string text;
    for (const std::string& n : names) text += (text.empty() ? "" : ", ") + n;
    return text;
  };
  if (!shx.empty())
    check.Reasons.push_back(
        {Level::Note, "SHX fonts drawn in " + std::string(kStrokeStandIn) + ": " + joined(shx)});
  if (!alike.empty())
    check.Reasons.push_back({Level::Note, "fonts drawn in a face of the same widths: " + joined(alike)});
  if (!other.empty())
    check.Reasons.push_back(
        {Level::Warning, "fonts not on this machine, drawn in another face: " + joined(other)});
}

void CheckSystem(const Georeference& geo, ImportCheck& check) {
  if (geo.Known())
    check.Reasons.push_back(
        {Level::Note, "coordinate reference system known: " + geo.System.Name +
                          (geo.System.Epsg ? " (EPSG:" + std::to_string(geo.System.Epsg) + ")" : "") +
                          ", from " + geo.CrsSource});
  else
    check.Reasons.push_back(
        {Level::Note, std::string("coordinate reference system not known") +
                          (geo.FromGeoData ? " (GEODATA places the drawing, names no system)" : "")});
}

const char* LevelName(Level level) {
  return level == Level::Problem ? "problem" : level == Level::Warning ? "warning" : "note";
}

}  // namespace

std::string ImportCheck::Verdict() const {
  bool warning = false;
  for (const Reason& r : Reasons) {
    if (r.level == Level::Problem) return "not fit";
    warning = warning || r.level == Level::Warning;
  }
  return warning ? "fit with warnings" : "fit as background";
}

std::vector<std::string> ImportCheck::Lines() const {
  std::vector<std::string> lines{"Import check: " + Verdict()};
  for (const Reason& r : Reasons) lines.push_back(std::string("  ") + LevelName(r.level) + ": " + r.text);
  return lines;
}

std::string ImportCheck::Json() const {
  QJsonArray reasons;
  for (const Reason& r : Reasons)
    reasons.append(QJsonObject{{"level", LevelName(r.level)}, {"text", QString::fromStdString(r.text)}});
  return QJsonDocument(QJsonObject{{"verdict", QString::fromStdString(Verdict())}, {"reasons", reasons}})
      .toJson(QJsonDocument::Compact)
      .toStdString();
}

ImportCheck CheckImport(const Drawing& drawing, const LoadOutcome& outcome, const Georeference& geo) {
  ImportCheck check;
  CheckContent(drawing, outcome, check);
  CheckUnits(drawing, check);
  if (const LoadReport* report = outcome.ReportIfKept()) CheckReport(*report, check);
  CheckFonts(drawing, check);
  CheckSystem(geo, check);
  return check;
}

}  // namespace dxfimport
