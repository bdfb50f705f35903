// Texts of the modern profile: TEXT, ATTRIB, ATTDEF and MTEXT, each in its style.
#include <algorithm>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/curves.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/model/style_maps.h"
#include "dxf/model/text_codes.h"
#include "dxf/model/text_styles.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {

// A text in the entity's layer and colour with its style's face and defaults.
TextEntity ModernReader::StyledText(std::string markup, double height, const Style& style,
                                    int32_t styleRow) const {
  TextEntity t;
  t.Text = std::move(markup);
  t.Height = height;
  t.Layer = style.Layer;
  t.Color = style.Color;
  t.Style = styleRow;
  t.FontName = std::string(kStrokeStandIn);
  t.FontFactor = 1;
  if (styleRow > 0) {
    const TextStyle& s = drawing_.TextStyles[std::size_t(styleRow - 1)];
    t.FontName = s.Face;
    t.WidthFactor = s.WidthFactor;
    t.Oblique = s.Oblique;
    t.Mirror = s.Mirror;
    if (!(t.Height > 0) && s.FixedHeight > 0) t.Height = s.FixedHeight;
  }
  return t;
}

// TEXT and ATTRIB: the point 10/20 (11/21 when justified other than left on the
// baseline), in object coordinates, with height 40, rotation 50, width factor 41, oblique
// angle 51, mirror flags 71 (each the style's when the text has none) and the vertical
// justification in `verticalCode` (73 for TEXT, 74 for ATTRIB). An aligned or fitted text
// (72 = 3 or 5) runs from 10/20 to 11/21.
TextEntity ModernReader::ReadTextFields(const Style& style, int verticalCode) {
  TextEntity text = StyledText(TextMarkup(Text(1)), Num(40), style, StyleRow(Value(7)));
  if (Has(41) && Num(41) > 0) text.WidthFactor = Num(41);
  if (Has(51)) text.Oblique = Num(51);
  if (Has(71)) text.Mirror = Whole(71, 0, 0, 6) & (kTextBackward | kTextUpsideDown);
  text.HorzJustify = Whole(72, 0, 0, 5);
  text.VertJustify = Whole(verticalCode, 0, 0, 3);
  const bool twoPoints = (text.HorzJustify == 3 || text.HorzJustify == 5) && Has(11);
  const bool atAlignment = !twoPoints && (text.HorzJustify != 0 || text.VertJustify != 0) && Has(11);
  const PointD at = atAlignment ? Point(11) : Point(10);
  const PointD second = twoPoints ? Point(11) : at;
  text.X = at.x, text.Y = at.y;
  text.AlignX = second.x, text.AlignY = second.y;
  text.Rotation = Num(50);
  return Placed(text, Placement(Num(30)));
}

bool ModernReader::DXFText() {
  Emit(ReadTextFields(ReadStyle(), 73));
  return true;
}

// ATTRIB: an attribute that is not invisible (70 bit 0). On layer 0 it takes its
// insert's layer, and "by block" its insert's colour, as the insert's own rows do.
bool ModernReader::DXFAttrib() {
  if (Whole(70, 0, 0, 255) & 1) return true;
  Style style = ReadStyle();
  if (style.Layer == LayerZero()) style.Layer = attribOwner_.Layer;
  if (style.Color == kForeground && Whole(62, 256, -32768, 32767) == 0) style.Color = attribOwner_.Color;
  AttribEntity attrib;
  attrib.Block = drawing_.BlockCount();
  attrib.Text = ReadTextFields(style, 74);
  Emit(attrib);
  return true;
}

// ATTDEF: outside a block its tag (2) is shown, as CAD tools show a definition; inside
// one only a constant attribute (70 bit 1) shows, with its value, in every insert.
bool ModernReader::DXFAttDef() {
  const int32_t flags = Whole(70, 0, 0, 255);
  if (block_ && !(flags & 1) && !(flags & 2)) {
    // Kept by its handle for the block content of a MULTILEADER, which gives its value.
    if (const uint64_t handle = HandleOf(Value(5)); handle && attributeDefinitions_.size() < 100000)
      attributeDefinitions_[handle] = ReadTextFields(ReadStyle(), 74);
  }
  if ((flags & 1) || (block_ && !(flags & 2))) return true;
  TextEntity text = ReadTextFields(ReadStyle(), 74);
  if (!block_) text.Text = TextMarkup(Text(2));
  Emit(text);
  return true;
}

// MTEXT: its content (3 chunks, then 1) at the insertion point 10/20 along the direction
// 11/21 or turned by the rotation 50 (all in world coordinates), height 40, reference
// width 41, attachment 71, line spacing 73/44, its columns and background fill.
bool ModernReader::DXFMText() {
  const Style style = ReadStyle();
  std::string bytes;
  for (const auto& [code, value] : pairs_)
    if ((code == 1 || code == 3) && bytes.size() < LoadContext::kMaxTextBytes)
      bytes.append(value.substr(0, LoadContext::kMaxTextBytes));
  MTextEntity m;
  m.Content = ctx_.decoder.Decode(bytes);
  m.Layer = style.Layer, m.Color = style.Color;
  m.Style = StyleRow(Value(7));
  m.Height = Num(40);
  if (!(m.Height > 0) && m.Style > 0) m.Height = drawing_.TextStyles[std::size_t(m.Style - 1)].FixedHeight;
  m.Width = std::max(0.0, Num(41));
  m.Attachment = Whole(71, 1, 1, 9);
  m.SpacingStyle = Whole(73, 1, 1, 2);
  m.SpacingFactor = std::clamp(Num(44, 1), 0.25, 4.0);
  // The frame: the direction 11/21 (or the rotation 50) in world coordinates, the text's
  // up the extrusion crossed with it: seen from below (an extrusion with a negative z) the
  // text is mirrored about its baseline.
  const PointD along = (Has(11) || Has(21)) ? PointD{Num(11), Num(21)}
                                            : PointD{std::cos(Radians(Num(50))), std::sin(Radians(Num(50)))};
  m.Rotation = Degrees(std::atan2(along.y, along.x));
  m.Mirror = Extrusion().z < 0 ? kTextUpsideDown : 0;
  const PointD at = Point(10);
  m.X = at.x, m.Y = at.y;
  m.ColumnKind = Whole(75, 0, 0, 2), m.ColumnCount = Whole(76, 0, 0, 1000);
  m.ColumnWidth = Num(48), m.ColumnGutter = Num(49), m.ColumnHeight = Num(46);
  ReadEmbeddedColumns(m);
  m.FillFlags = Whole(90, 0, 0, 31);
  m.FillColor =
      Has(421) ? TrueColorValue(Value(421), Whole(63, 256, 0, 256)) : AciColor(Whole(63, 7, 0, 256));
  m.FillScale = Num(45, 1.5);
  Emit(Placed(m, toBlock_));
  return true;
}

// The columns of an MTEXT of AutoCAD 2018 on (the embedded object after 101): the kind
// 71, the count 72, width 44, gutter 45 and the height 46.
void ModernReader::ReadEmbeddedColumns(MTextEntity& m) const {
  for (const auto& [code, value] : embedded_) {
    switch (code) {
      case 71:
        m.ColumnKind = int32_t(std::clamp(Val(value), 0.0, 2.0));
        break;
      case 72:
        m.ColumnCount = int32_t(std::clamp(Val(value), 0.0, 1000.0));
        break;
      case 44:
        m.ColumnWidth = Val(value);
        break;
      case 45:
        m.ColumnGutter = Val(value);
        break;
      case 46:
        if (!(m.ColumnHeight > 0)) m.ColumnHeight = Val(value);
        break;
      default:
        break;
    }
  }
}

}  // namespace dxfimport
