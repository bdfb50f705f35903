#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/model/geometry.h"

namespace dxfimport {

// What the attribute commands of a proxy graphics stream have set for the shapes after
// them. Indexes are positions in the drawing's LAYER and LTYPE tables.
struct ProxyPen {
  static constexpr int32_t kByLayer = -1;
  static constexpr int32_t kByBlock = -2;
  int32_t Aci = 256;              // 256 by layer, 0 by block
  int32_t Rgb = -1;               // a true colour 0x00RRGGBB, or -1 (Aci holds)
  int32_t Layer = -1;             // -1: the entity's own
  int32_t LineType = kByLayer;    // an index, kByLayer or kByBlock
  int32_t LineWeight = kByLayer;  // hundredths of a millimetre, or -1, -2, -3
  bool Fill = false;              // polygons and shells are filled
};

// One shape of a proxy graphics stream, in the plan (x, y) of the entity's coordinates
// with every pushed transform applied.
struct ProxyShape {
  enum class Kind : int8_t { Path, Arc, Text };
  Kind Type = Kind::Path;
  ProxyPen Pen;
  // Path: points with the bulge of the segment each starts (empty: straight), closed
  // back to the first, filled when the pen's fill was on for a polygon or shell face.
  std::vector<PointD> Points;
  std::vector<double> Bulges;
  bool Closed = false;
  bool Filled = false;
  // Arc and Text: Frame maps the shape's own plane (origin at the centre or the
  // insertion point, x along the start of the arc or the text's direction) into the plan.
  Affine Frame;
  double Radius = 0;
  double Start = 0, End = 0;                        // radians, counter-clockwise in the frame
  double Height = 0, WidthFactor = 1, Oblique = 0;  // Oblique in degrees
  std::string Text;                                 // UTF-8 when Unicode, else in the drawing's code page
  bool Unicode = false;
};

// What a stream held: its shapes, the number of commands read, those passed over (kinds
// that draw nothing here, or unknown), and whether it ended before its stated length.
struct ProxyGraphics {
  std::vector<ProxyShape> Shapes;
  int32_t Commands = 0;
  int32_t PassedOver = 0;
  bool Damaged = false;
};

// Decodes the proxy graphics stream of an entity (the bytes of its 310 chunks after the
// byte count 92 or 160): a header (total size, command count), then commands of a
// 32-bit size and type each. Every count is held to the bytes that are there; a command
// that does not fit ends the stream (Damaged). At most `maxShapes` shapes are kept.
ProxyGraphics DecodeProxyGraphics(std::string_view bytes, std::size_t maxShapes = 100000);

}  // namespace dxfimport
