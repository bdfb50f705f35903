// Readers of the simple entities: LINE, CIRCLE/ARC, SOLID, 3DFACE, TEXT, ATTRIB, POINT.
#include <cmath>

#include "dxf/legacy/legacy_reader.h"
#include "dxf/model/rotation.h"
#include "dxf/model/style_maps.h"
#include "dxf/model/text_codes.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {

float UnWindAngle(float& angle) {
  constexpr float kStepLimit = 360.0f * 1024;
  if (angle >= kStepLimit) angle = float(std::fmod(double(angle), 360.0));
  while (angle >= 360.0f) angle = angle - 360.0f;
  return angle;
}

double LegacyReader::RelX(double x) const { return x - drawing_.Blocks[currentBlock_ - 1].BaseX; }
double LegacyReader::RelY(double y) const { return y - drawing_.Blocks[currentBlock_ - 1].BaseY; }

bool LegacyReader::DXFLine() {
  LoadEntity();
  LineEntity line;
  line.Layer = drawing_.LayerIndex(GroupValues[8]);
  line.Color = ColorMap(Int16(62));
  line.LineType = LineTypeMap(GroupValues[6]);
  line.X1 = Sng(10);
  line.Y1 = Sng(20);
  line.X2 = Sng(11);
  line.Y2 = Sng(21);
  if (!NoExtentsUpdate) drawing_.CheckExtents(line.X1, line.Y1, line.X2, line.Y2);
  Store(line);
  return true;
}

bool LegacyReader::DXFCircle() {
  LoadEntity();
  ArcEntity arc;
  arc.LineType = LineTypeMap(GroupValues[6]);
  arc.Layer = drawing_.LayerIndex(GroupValues[8]);
  arc.Color = ColorMap(Int16(62));
  arc.CenterX = Sng(10);
  arc.CenterY = Sng(20);
  arc.Radius = Sng(40);
  float start = Sng(50), end = Sng(51);
  arc.StartAngle = UnWindAngle(start);
  arc.EndAngle = UnWindAngle(end);
  if (!NoExtentsUpdate) {
    double r = arc.Radius;
    drawing_.CheckExtents(arc.CenterX - r, arc.CenterY - r, arc.CenterX + r, arc.CenterY + r);
  }
  Store(arc);
  return true;
}

bool LegacyReader::DXFSolid() {
  LoadEntity();
  SolidEntity solid;
  solid.Layer = drawing_.LayerIndex(GroupValues[8]);
  solid.Color = ColorMap(Int16(62));
  solid.X1 = Sng(10), solid.Y1 = Sng(20);
  solid.X2 = Sng(11), solid.Y2 = Sng(21);
  solid.X3 = Sng(12), solid.Y3 = Sng(22);
  solid.X4 = Sng(13), solid.Y4 = Sng(23);
  if (!NoExtentsUpdate) drawing_.CheckExtents(solid.X1, solid.Y1, solid.X2, solid.Y2);
  bool toTables = !InBlock;
  Store(solid);
  if (toTables && !NoExtentsUpdate) drawing_.CheckExtents(solid.X4, solid.Y4, solid.X3, solid.Y3);
  return true;
}

// A 3D face becomes its four edges, corner 1 to 2, 2 to 3, 3 to 4 and 4 to 1; the Z
// groups are not read.
bool LegacyReader::DXF3DFace() {
  LoadEntity();
  LineEntity edge;
  edge.Layer = drawing_.LayerIndex(GroupValues[8]);
  edge.Color = ColorMap(Int16(62));
  edge.LineType = LineTypeMap(GroupValues[6]);
  const PointF corners[4] = {{Sng(10), Sng(20)}, {Sng(11), Sng(21)}, {Sng(12), Sng(22)}, {Sng(13), Sng(23)}};
  if (!NoExtentsUpdate) {
    drawing_.CheckExtents(corners[0].x, corners[0].y, corners[1].x, corners[1].y);
    drawing_.CheckExtents(corners[2].x, corners[2].y, corners[3].x, corners[3].y);
  }
  for (int i = 0; i < 4; ++i) {
    const PointF& from = corners[i];
    const PointF& to = corners[(i + 1) % 4];
    edge.X1 = from.x, edge.Y1 = from.y, edge.X2 = to.x, edge.Y2 = to.y;
    Store(edge);
  }
  return true;
}

// The fields that TEXT and ATTRIB share: position by justification, height, the text
// with its control sequences resolved, font and rotation.
TextEntity LegacyReader::ReadTextFields() {
  TextEntity text;
  text.HorzJustify = Long(72);
  switch (text.HorzJustify) {
    case 0:
    case 3:
    case 5:
      text.X = Sng(10), text.Y = Sng(20);
      break;
    case 1:
    case 2:
      text.X = Sng(11), text.Y = Sng(21);
      break;
    case 4:
      text.X = Sng(11), text.Y = Sng(20);
      break;  // the X of 11 with the Y of 20: kept
    default:
      break;
  }
  text.Height = Sng(40);
  ControlCodeResult coded = ApplyControlCodes(Text(1));
  text.Text = std::string(TrimRight(CutChars(ReplaceQuote(coded.Text), 100)));
  text.Underline = coded.Underline ? -1 : 0;
  FontChoice font = FontNameMap(Text(7));
  text.FontName = std::string(font.Face);
  text.FontFactor = font.Factor;
  text.Rotation = Sng(50);
  double alignX = Num(11), alignY = Num(21);
  if (alignX != 0 && alignY != 0 && text.HorzJustify == 5 && alignX - text.X != 0) {
    // A fitted text runs along its two points; the arctangent's -90..90 range turns a
    // right-to-left text by 180 degrees, as it always did.
    text.Rotation = CSng(std::atan((alignY - text.Y) / (alignX - text.X)) * 180.0 / 3.14159);
  }
  return text;
}

bool LegacyReader::DXFText() {
  LoadEntity();
  int32_t layer = drawing_.LayerIndex(GroupValues[8]);
  int32_t color = ColorMap(Int16(62));
  TextEntity text = ReadTextFields();
  text.Layer = layer;
  text.Color = color;
  if (!NoExtentsUpdate) drawing_.CheckExtents(text.X, text.Y, text.X, text.Y);
  Store(std::move(text));
  return true;
}

// Attributes take the layer of the INSERT they follow.
bool LegacyReader::DXFAttrib() {
  LoadEntity();
  // Only attributes without flags are kept.
  if (Long(70) != 0) return true;
  int32_t color = ColorMap(Int16(62));
  AttribEntity attrib;
  attrib.Block = drawing_.BlockCount();
  attrib.Text = ReadTextFields();
  attrib.Text.Layer = currentInsertLayer_;
  attrib.Text.Color = color;
  const TextEntity& t = attrib.Text;
  if (!NoExtentsUpdate) drawing_.CheckExtents(t.X, t.Y, t.X, t.Y);
  // Inside a block definition an attribute is never replayed, so it is not kept there.
  if (!InBlock) drawing_.AddAttrib(attrib);
  return true;
}

// POINT entities are not drawn; their lines pass through the keyword comparison.
bool LegacyReader::DXFPoint() { return true; }

}  // namespace dxfimport
