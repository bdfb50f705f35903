#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "dxf/rotation.h"

namespace dxfimport {

// Colours are RGB values in the Windows layout 0x00BBGGRR; a Layer is a 1-based row of
// Drawing::Layers; a LineType is a pen style 0..4; coordinates are drawing units.

// LINE, a 3DFACE edge (groups 10/20 start, 11/21 end).
struct LineEntity {
  float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
};

// One segment of a POLYLINE, from the previous vertex to this one.
struct PolySegment {
  float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  float Width = 0;  // group 40 of the POLYLINE header
  int32_t Layer = 0;
  int32_t Color = 0;
  float Bulge = 0;  // group 42 of the vertex that starts the segment
};

// TEXT and the text part of an ATTRIB.
struct TextEntity {
  float X = 0, Y = 0;       // insertion or alignment point
  std::string Text;         // at most 100 characters, trailing blanks not kept
  float Height = 0;         // group 40
  float Rotation = 0;       // degrees, group 50
  int32_t HorzJustify = 0;  // group 72
  int32_t Layer = 0;
  int32_t Underline = 0;    // -1 when the text carried %%u
  int32_t Color = 0;
  std::string FontName;     // font face, at most 20 characters
  float FontFactor = 0;     // size factor that goes with the face
};

// CIRCLE and ARC (groups 10/20 centre, 40 radius, 50/51 angles in degrees).
struct ArcEntity {
  float CenterX = 0, CenterY = 0;
  float Radius = 0;
  float StartAngle = 0, EndAngle = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
};

// SOLID; the corners are kept in the order 1, 2, 4, 3 so that a polygon through them in
// stored order is the quadrilateral the file describes.
struct SolidEntity {
  float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0, X4 = 0, Y4 = 0, X3 = 0, Y3 = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
};

// A solid-filled HATCH: its boundary loops as polygons, filled by the alternate rule
// (inner loops are holes). Points of loop i run from LoopStarts[i] to the next start.
struct HatchEntity {
  std::vector<PointF> Points;
  std::vector<int32_t> LoopStarts;
  int32_t Layer = 0;
  int32_t Color = 0;
};

// ATTRIB: the block count at the time it was read, then a text.
struct AttribEntity {
  int32_t Block = 0;
  TextEntity Text;
};

// Colour values beyond RGB, kept in the high byte (modern profile): black chosen
// explicitly (drawn black even where colour 0 takes its layer's colour), and "by block"
// inside a block definition (replaced by the insert's colour when it is inserted).
inline constexpr int32_t kExplicitBlack = 0x01000000;
inline constexpr int32_t kColorByBlock = 0x02000000;

struct LayerEntry {
  std::string Name;      // group 2, at most 20 characters, trailing blanks not kept
  int32_t Color = 0;     // ColorMap of group 62
  int32_t IsOn = -1;     // -1 on, 0 off (frozen)
  int32_t LineType = 0;  // pen style of group 6, for entities drawn "by layer" (modern)
};

enum EntityKind : int32_t {
  kKindLine = 1,
  kKindPolySeg = 2,
  kKindText = 3,
  kKindArc = 4,
  kKindSolid = 5,
  kKindAttrib = 7,
  kKindHatch = 8,  // modern profile
};

// One drawable item in file order: its kind and its 1-based row in that kind's table.
struct SeqEntry {
  int32_t Kind = 0;
  int32_t Index = 0;
};

// One entity of a block definition, coordinates relative to the block's base point.
using BlockRecord = std::variant<LineEntity, PolySegment, TextEntity, ArcEntity, SolidEntity, HatchEntity>;

struct BlockEntry {
  float BaseX = 0, BaseY = 0;  // groups 10, 20 of the BLOCK
  std::string Name;            // group 2, trimmed, at most 50 characters
  std::vector<BlockRecord> Records;
  int32_t Depth = 0;  // levels of inserts expanded into it (modern profile)
};

// An INSERT met inside a block definition before its block was defined.
struct PendingInsert {
  int32_t Container = 0;  // row of the block that was being defined (0: none)
  std::string BlockName;  // group 2, at most 50 characters
  int32_t Layer = 0;
  float X = 0, Y = 0;
  float Rotation = 0;
  float ScaleX = 1, ScaleY = 1;
  int32_t Color = 0;  // the insert's colour, for entities "by block" (modern profile)
};

}  // namespace dxfimport
