#include "dxf/model/stats.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "support/messages.h"

namespace dxfimport {

std::vector<std::string> StatsLines(const Drawing& d, const std::string& heading,
                                    const NumberSeparators& sep) {
  auto whole = [&sep](int64_t n) { return FormatGrouped(n, sep); };
  auto extent = [&sep, &d](double v) {
    return d.Rules().InPrecision([&]<class Real>(Real) { return FormatUpToTwo(Real(v), sep); });
  };
  return {
      heading,
      "",
      "Entities: " + whole(d.SeqCount()),
      "Lines: " + whole(d.LineCount()),
      "Polylines: " + whole(d.PolySegCount()),
      "Arcs and circles: " + whole(d.ArcCount()),
      "Solids: " + whole(d.SolidCount()),
      "Text: " + whole(d.TextCount()),
      "Layers: " + whole(d.LayerCount()),
      "Blocks: " + std::to_string(d.BlockCount()),
      "Attributes: " + std::to_string(d.AttribCount()),
      "",
      "Left: " + extent(d.ExtMinX),
      "Top: " + extent(d.ExtMaxY),
      "Right: " + extent(d.ExtMaxX),
      "Bottom: " + extent(d.ExtMinY),
  };
}

void DisplayStats(const Drawing& drawing, const std::string& heading, const LoadReport* report,
                  const std::vector<std::string>& more) {
  std::string text;
  for (const std::string& line : StatsLines(drawing, heading)) text += line + "\r\n";
  if (report) {
    text += "\r\n";
    for (const std::string& line : report->Lines()) text += line + "\r\n";
  }
  for (const std::string& line : more) text += line + "\r\n";
  ShowMessage(MessageIcon::Information, text);
}

std::string StatsJson(const Drawing& d, const std::string& heading, const LoadReport* report) {
  QJsonObject extents{{"left", double(d.ExtMinX)},
                      {"top", double(d.ExtMaxY)},
                      {"right", double(d.ExtMaxX)},
                      {"bottom", double(d.ExtMinY)}};
  QJsonObject o{{"file", QString::fromStdString(heading)},
                {"entities", d.SeqCount()},
                {"lines", d.LineCount()},
                {"polylineSegments", d.PolySegCount()},
                {"arcsAndCircles", d.ArcCount()},
                {"solids", d.SolidCount()},
                {"texts", d.TextCount()},
                {"layers", d.LayerCount()},
                {"blocks", d.BlockCount()},
                {"attributes", d.AttribCount()},
                {"extents", extents}};
  if (report) {
    QJsonArray entries;
    for (const ReportEntry& e : report->Entries()) {
      QJsonObject entry{
          {"kind", QString::fromStdString(e.Kind)}, {"count", double(e.Count)}, {"line", double(e.Line)}};
      if (e.Drawn) entry.insert("drawn", true);
      entries.append(entry);
    }
    o.insert("report", entries);
    o.insert("loadedCleanly", report->Clean());
  }
  return QJsonDocument(o).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace dxfimport
