#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dxf/model/geometry.h"

namespace dxfimport {

// Colours are RGB values in the Windows layout 0x00BBGGRR, or one of the markers below; a
// Layer is a 1-based row of Drawing::Layers; a LineType is a pen style (0..4, or a dash
// pattern from kFirstDashPattern on); coordinates are drawing units. The legacy profile
// stores single-precision values in the coordinate fields and computes with them in
// single precision; the modern profile keeps the file's doubles.

// Colour values beyond RGB, kept in the high byte (modern profile).
inline constexpr int32_t kExplicitBlack = 0x01000000;  // black chosen explicitly
inline constexpr int32_t kColorByBlock = 0x02000000;   // inside a block: the insert's colour
inline constexpr int32_t kForeground = 0x04000000;     // colour 7: black on light, white on dark
inline constexpr int32_t kColorOfLayer = 0x08000000;   // low bits: the layer row whose colour it takes
inline constexpr int32_t kColorMarkers = 0x7F000000;

// Line weights (group 370) in hundredths of a millimetre, or one of these.
inline constexpr int16_t kWeightByLayer = -1;
inline constexpr int16_t kWeightByBlock = -2;
inline constexpr int16_t kWeightDefault = -3;

// Opacity of a row (modern profile): 255 opaque down to 25 (90 % transparent, the most
// CAD tools allow). Inside a block definition two values stand for "by block" and "by
// layer" until an insert resolves them.
inline constexpr uint8_t kOpaque = 255;
inline constexpr uint8_t kAlphaByBlock = 1;
inline constexpr uint8_t kAlphaByLayer = 2;
inline constexpr uint8_t kLeastAlpha = 25;

// Pen styles "by layer" and "by block" while a block definition is read (modern); an
// insert replaces them.
inline constexpr int32_t kLineTypeByLayer = -1;
inline constexpr int32_t kLineTypeByBlock = -2;

// LINE, a 3DFACE edge, a mesh edge (groups 10/20 start, 11/21 end).
struct LineEntity {
  double X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;  // modern profile
  uint8_t Alpha = kOpaque;              // modern profile
};

// One segment of a polyline, from the previous vertex to this one.
struct PolySegment {
  double X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  float Width = 0;  // group 40 of the POLYLINE header; modern: the start vertex's width
  int32_t Layer = 0;
  int32_t Color = 0;
  float Bulge = 0;  // group 42 of the vertex that starts the segment
  // Modern profile: the width at the end vertex; the segment's line type and weight;
  // whether it continues the one stored before it (so that wide segments meet in a
  // mitre). The legacy redraw draws segments solid.
  float EndWidth = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;
  bool Joined = false;
  uint8_t Alpha = kOpaque;
};

// Mirror flags of a text (group 71 of TEXT and STYLE).
inline constexpr int32_t kTextBackward = 2;
inline constexpr int32_t kTextUpsideDown = 4;

// TEXT and the text part of an ATTRIB.
struct TextEntity {
  double X = 0, Y = 0;      // insertion or alignment point
  std::string Text;         // legacy: at most 100 characters, trailing blanks not kept;
                            // modern: the text in the inline-code markup of MTEXT
  double Height = 0;        // group 40; modern: the height of a capital
  double Rotation = 0;      // degrees, group 50
  int32_t HorzJustify = 0;  // group 72
  int32_t Layer = 0;
  int32_t Underline = 0;  // -1 when the text carried %%u
  int32_t Color = 0;
  std::string FontName;   // font face, at most 20 characters
  double FontFactor = 0;  // size factor that goes with the face
  // Modern profile:
  int32_t VertJustify = 0;  // 73 (74 of an ATTRIB): baseline, bottom, middle, top
  int32_t Style = 0;        // row of Drawing::TextStyles (0: none)
  double WidthFactor = 1;   // 41
  double Oblique = 0;       // 51, degrees
  int32_t Mirror = 0;       // 71: kTextBackward, kTextUpsideDown
  uint8_t Alpha = kOpaque;
  double AlignX = 0, AlignY = 0;  // the second point (11/21) of an aligned or fitted text
};

// MTEXT (modern profile): its content in the inline-code markup, laid out with the
// fonts' metrics when it is drawn.
struct MTextEntity {
  double X = 0, Y = 0;       // insertion point 10/20
  double Rotation = 0;       // degrees: the direction 11/21 or the rotation 50
  double Height = 0;         // 40, the height of a capital
  double Width = 0;          // reference width 41 (0: lines are not wrapped)
  int32_t Attachment = 1;    // 71: 1..9 top left .. bottom right
  int32_t SpacingStyle = 1;  // 73: 1 at least, 2 exactly
  double SpacingFactor = 1;  // 44
  int32_t Style = 0;         // row of Drawing::TextStyles (0: none)
  int32_t Mirror = 0;        // kTextBackward when mirrored (an extrusion along -Z, a mirroring insert)
  int32_t Layer = 0;
  int32_t Color = 0;
  // Columns: 0 none, 1 static, 2 dynamic (75 or the embedded object's 71), their count,
  // width, gutter and height (76, 48, 49 and 46 or 50).
  int32_t ColumnKind = 0, ColumnCount = 0;
  double ColumnWidth = 0, ColumnGutter = 0, ColumnHeight = 0;
  // Background (90: 1 a fill colour, 2 the background colour), its colour (63/421) and the
  // margin around the text as a factor of the height (45).
  int32_t FillFlags = 0;
  int32_t FillColor = 0;
  double FillScale = 1.5;
  uint8_t Alpha = kOpaque;
  std::string Content;
};

// A text style (STYLE table, modern profile): the face its texts are drawn in and their
// defaults.
struct TextStyle {
  std::string Name;        // group 2
  std::string Font;        // group 3: the font file as the drawing names it
  std::string Face;        // the family the texts are drawn in
  bool Stroke = false;     // an SHX font (drawn in a face that stands in for it)
  double FixedHeight = 0;  // 40 (0: the texts give theirs)
  double WidthFactor = 1;  // 41
  double Oblique = 0;      // 50, degrees
  int32_t Mirror = 0;      // 71
  bool Vertical = false;   // 70 bit 2
};

// CIRCLE and ARC (groups 10/20 centre, 40 radius, 50/51 angles in degrees).
struct ArcEntity {
  double CenterX = 0, CenterY = 0;
  double Radius = 0;
  double StartAngle = 0, EndAngle = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;
  uint8_t Alpha = kOpaque;  // modern profile
};

// An elliptic arc (modern profile): P(t) = centre + U cos t + V sin t for t from Start to
// End radians, U and V conjugate semi-axes. ELLIPSE entities, and circles and arcs that
// an insert or an object coordinate system distorts.
struct EllipseEntity {
  double CenterX = 0, CenterY = 0;
  double UX = 0, UY = 0, VX = 0, VY = 0;
  double Start = 0, End = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;
  uint8_t Alpha = kOpaque;
};

// SOLID; the corners are kept in the order 1, 2, 4, 3 so that a polygon through them in
// stored order is the quadrilateral the file describes.
struct SolidEntity {
  double X1 = 0, Y1 = 0, X2 = 0, Y2 = 0, X4 = 0, Y4 = 0, X3 = 0, Y3 = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
};

// One line family of a hatch pattern, in drawing units: lines through Base + k * Offset
// (every whole k) along Direction, dashed by Dashes (multiples of |Direction|: a dash
// positive, a gap negative, a dot 0; none is a solid line).
struct PatternLine {
  PointD Base, Direction, Offset;
  std::vector<double> Dashes;
};

// The gradient of a HATCH filled with one (450 = 1): its shape (470), its two colours as
// row colours (a one-colour gradient's second is its first tinted, 462), the direction of
// its axis (460, turned with the hatch) and the shift of its middle along it (461).
struct HatchGradient {
  enum class Shape : int8_t {
    Linear,
    Cylinder,
    InvCylinder,
    Spherical,
    InvSpherical,
    Hemispherical,
    InvHemispherical,
    Curved,
    InvCurved
  };
  Shape Kind = Shape::Linear;
  int32_t From = 0, To = 0;
  PointD Direction{1, 0};
  double Shift = 0;
};

// A HATCH (modern profile): its boundary loops as polygons, filled by the alternate rule
// (inner loops are holes). Points of loop i run from LoopStarts[i] to the next start.
struct HatchEntity {
  enum class Fill : int8_t { Solid, Pattern, Background, Gradient };
  std::vector<PointD> Points;
  std::vector<int32_t> LoopStarts;
  std::vector<PatternLine> Pattern;  // Fill::Pattern
  HatchGradient Gradient;            // Fill::Gradient
  Fill Filling = Fill::Solid;
  uint8_t Alpha = kOpaque;
  int32_t Layer = 0;
  int32_t Color = 0;
};

// ATTRIB: the block count at the time it was read, then a text.
struct AttribEntity {
  int32_t Block = 0;
  TextEntity Text;
};

// POINT (modern profile), drawn as the drawing's point style ($PDMODE, $PDSIZE) says.
struct PointEntity {
  double X = 0, Y = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  uint8_t Alpha = kOpaque;
};

// RAY (one way from its base point) and XLINE (both ways), modern profile: drawn to the
// edges of the view.
struct RayEntity {
  double X = 0, Y = 0;    // groups 10/20
  double DX = 0, DY = 0;  // direction 11/21
  bool BothWays = false;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;
  uint8_t Alpha = kOpaque;
};

// IMAGE (modern profile): a raster picture laid on the drawing. Its lower-left corner is
// Origin, its bottom edge runs along Width and its left edge along Height (both in
// drawing units, the picture's whole size). It shows only what its clip boundary keeps
// (inside, or with ClipInverted outside), adjusted by brightness, contrast and fade
// (0..100; 50, 50 and 0 leave it as it is). A picture whose file was not found, and an
// underlay (PDF, DWF, DGN) whose page could not be read, are drawn as their frame (or
// the frame of their clip boundary) with the file's name. An underlay's frame is its page.
struct ImageEntity {
  PointD Origin, Width, Height;
  std::vector<PointD> Clip;  // drawing units; empty: the whole frame
  bool ClipInverted = false;
  int32_t Picture = 0;  // row of Drawing::Pictures
  int8_t Brightness = 50, Contrast = 50, Fade = 0;
  uint8_t Alpha = kOpaque;
  int32_t Layer = 0;
  int32_t Color = 0;
};

// The file behind pictures (IMAGEDEF) and underlays: its name as the drawing wrote it,
// and where it was found ("" when it was not, and for an underlay whose page cannot be
// read). An underlay shows one page of its file (a PDF page number or label).
struct PictureFile {
  std::string Name;
  std::string Path;
  bool Underlay = false;
  std::string Page;
  bool Resolved = false;  // looked for (by the reader of the drawing that names it)
};

// A clip of the rows drawn after a kKindClip entry: what lies inside an odd number of its
// loops (drawing units) is drawn. A viewport's frame, or a clipped block reference's
// boundary (with the hole of an inverted clip as a second loop).
struct ClipRegion {
  std::vector<std::vector<PointD>> Loops;
};

// An INSERT kept inside a block definition (modern profile): expanded when the block
// that holds it is inserted. Copy (c, r) of a MINSERT grid lands at
// Frame * translate(c * ColumnSpacing, r * RowSpacing) * Local.
struct InsertRef {
  int32_t Block = 0;  // row of the inserted block
  Affine Frame;       // object coordinates, insertion point and rotation
  Affine Local;       // scale and the inserted block's base point
  int32_t Columns = 1, Rows = 1;
  double ColumnSpacing = 0, RowSpacing = 0;
  int32_t Layer = 0;
  int32_t Color = 0;
  int32_t LineType = 0;
  int16_t LineWeight = kWeightDefault;
  uint8_t Alpha = kOpaque;
};

struct LayerEntry {
  std::string Name;                     // group 2, at most 20 characters, trailing blanks not kept
  int32_t Color = 0;                    // ColorMap of group 62
  int32_t IsOn = -1;                    // -1 on, 0 off (frozen)
  int32_t LineType = 0;                 // pen style of group 6, for entities drawn "by layer" (modern)
  int16_t LineWeight = kWeightDefault;  // group 370 (modern)
  uint8_t Alpha = kOpaque;              // the transparency of its extended data (modern)
};

enum EntityKind : int32_t {
  kKindLine = 1,
  kKindPolySeg = 2,
  kKindText = 3,
  kKindArc = 4,
  kKindSolid = 5,
  kKindAttrib = 7,
  kKindHatch = 8,  // modern profile from here on
  kKindEllipse = 9,
  kKindPoint = 10,
  kKindRay = 11,
  kKindInsert = 12,  // only inside block definitions
  kKindClip = 13,    // what follows is clipped to Clips[Index - 1] (Index 0 ends the last clip)
  kKindMText = 14,
  kKindImage = 15,
};

// One drawable item in file order: its kind and its 1-based row in that kind's table.
struct SeqEntry {
  int32_t Kind = 0;
  int32_t Index = 0;
};

}  // namespace dxfimport
