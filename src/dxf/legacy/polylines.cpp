// POLYLINE with its VERTEX entities and the closing SEQEND (legacy profile).
#include "dxf/legacy/legacy_reader.h"
#include "dxf/model/rotation.h"
#include "dxf/model/style_maps.h"
#include "support/log.h"

namespace dxfimport {

void LegacyReader::AddPolySegment(PolySegment seg) {
  if (InBlock) {
    seg.Bulge = 0;  // block records carry no bulge: polylines in blocks insert straight
  } else if (!NoExtentsUpdate) {
    drawing_.CheckExtents(seg.X1, seg.Y1, seg.X2, seg.Y2);
  }
  Store(seg);
}

// Each vertex after the first adds a segment from the previous one, with the bulge of the
// segment's start vertex; a spline frame control point (bit 4) adds none but still starts
// the next segment.
void LegacyReader::AddVertex(float x, float y, float bulge, int32_t vertexFlags) {
  OpenPolyline& p = polyline_;
  if (p.vertices++ == 0) {
    p.first = p.previous = {x, y};
    p.bulge = bulge;
    return;
  }
  if (!BitFlag(vertexFlags, 4)) {
    PolySegment seg = p.segment;
    seg.X1 = p.previous.x, seg.Y1 = p.previous.y, seg.X2 = x, seg.Y2 = y;
    seg.Bulge = p.bulge;
    AddPolySegment(seg);
  }
  p.previous = {x, y};
  p.bulge = bulge;
}

// A closed polyline gets its closing segment from the first vertex to the last, always
// straight.
void LegacyReader::EndPolyline() {
  OpenPolyline& p = polyline_;
  if (p.vertices == 0 || !BitFlag(p.flags, 0)) return;
  PolySegment closing = p.segment;
  closing.X1 = p.first.x, closing.Y1 = p.first.y, closing.X2 = p.previous.x, closing.Y2 = p.previous.y;
  closing.Bulge = 0;
  AddPolySegment(closing);
}

// Reads lines itself to see VERTEX and SEQEND, so the driver goes on after the SEQEND
// line. The vertices' own widths and every other polyline flag are ignored.
bool LegacyReader::DXFPoly() {
  LoadEntity();
  const float width = Sng(40);
  const int32_t flags = Long(70);
  polyline_ = {};
  polyline_.segment.Layer = drawing_.LayerIndex(GroupValues[8]);
  polyline_.segment.Color = ColorMap(Int16(62));
  polyline_.segment.Width = width;
  polyline_.flags = flags;

  CurrentLine = ctx_.source.ReadLine();
  if (CurrentLine != "VERTEX") {
    LogCritical("DXFPoly -- PolyLine Read Error");
    return false;
  }
  LoadEntity();
  AddVertex(Sng(10), Sng(20), Sng(42), 0);
  for (;;) {
    if (CurrentLine == "SEQEND") {
      EndPolyline();
      return true;
    }
    CurrentLine = ctx_.source.ReadLine();
    if (CurrentLine == "VERTEX") {
      LoadEntity();
      AddVertex(Sng(10), Sng(20), Sng(42), Long(70));
    }
  }
}

}  // namespace dxfimport
