// POLYLINE with its VERTEX entities and the closing SEQEND.
#include "dxf/reader.h"
#include "dxf/rotation.h"
#include "dxf/style_maps.h"
#include "support/log.h"

namespace dxfimport {

void DXFReader::AddPolySegment(PolySegment seg) {
  if (InBlock) {
    seg.Bulge = 0;  // block records carry no bulge: polylines in blocks insert straight
  } else if (!NoExtentsUpdate) {
    drawing_.CheckExtents(seg.X1, seg.Y1, seg.X2, seg.Y2);
  }
  Store(seg);
}

// Reads lines itself to see VERTEX and SEQEND, so the driver goes on after the SEQEND
// line. Vertices flagged as spline frame control points (bit 4) add no segment but still
// start the next one; the vertices' own widths and every other polyline flag are ignored.
bool DXFReader::DXFPoly() {
  LoadEntity();
  PolySegment seg;
  seg.Layer = drawing_.LayerIndex(GroupValues[8]);
  seg.Color = ColorMap(Int16(62));
  const int32_t flags = Long(70);
  seg.Width = Sng(40);

  CurrentLine = source_.ReadLine();
  if (CurrentLine != "VERTEX") {
    LogCritical("DXFPoly -- PolyLine Read Error");
    return false;
  }
  LoadEntity();
  const PointF first{Sng(10), Sng(20)};
  PointF previous = first;
  float bulge = Sng(42);
  for (;;) {
    if (CurrentLine == "SEQEND") {
      if (BitFlag(flags, 0)) {
        // The closing segment runs from the first vertex to the last, always straight.
        PolySegment closing = seg;
        closing.X1 = first.x, closing.Y1 = first.y, closing.X2 = previous.x, closing.Y2 = previous.y;
        closing.Bulge = 0;
        AddPolySegment(closing);
      }
      return true;
    }
    CurrentLine = source_.ReadLine();
    if (CurrentLine == "VERTEX") {
      LoadEntity();
      const PointF current{Sng(10), Sng(20)};
      if (!BitFlag(Long(70), 4)) {
        seg.X1 = previous.x, seg.Y1 = previous.y, seg.X2 = current.x, seg.Y2 = current.y;
        seg.Bulge = bulge;
        AddPolySegment(seg);
      }
      previous = current;
    }
    bulge = Sng(42);
  }
}

}  // namespace dxfimport
