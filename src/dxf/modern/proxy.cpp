// Entities of classes this reader does not know, drawn from the proxy graphics their
// CAD tool saved with them: walls, windows and axis bubbles of architecture add-ons,
// objects of civil and plant tools, ACAD_PROXY_ENTITY.
#include <algorithm>
#include <cctype>
#include <cmath>

#include "dxf/input/proxy_graphics.h"
#include "dxf/model/colors.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = char(std::toupper(static_cast<unsigned char>(c)));
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Appends the bytes of one 310 chunk (hexadecimal digits; anything else ends it).
void AppendHex(std::string_view hex, std::string& bytes) {
  hex = Trim(hex);
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    const int hi = HexDigit(hex[i]), lo = HexDigit(hex[i + 1]);
    if (hi < 0 || lo < 0) return;
    bytes.push_back(char(hi * 16 + lo));
  }
}

}  // namespace

// Where the proxy graphics of the record start: its byte count (92, or 160 from AutoCAD
// 2013 on) right before 310 chunks. The size of the pairs when it has none.
std::size_t ModernReader::ProxyGraphicsStart() const {
  for (std::size_t i = 0; i + 1 < pairs_.size(); ++i) {
    if ((pairs_[i].first != 92 && pairs_[i].first != 160) || pairs_[i + 1].first != 310) continue;
    const double declared = Val(pairs_[i].second);
    if (declared >= 8 && declared < 1e9) return i;
  }
  return pairs_.size();
}

// The bytes of the record's proxy graphics (empty when it has none).
std::string ModernReader::ProxyGraphicsBytes() const {
  std::string bytes;
  const std::size_t start = ProxyGraphicsStart();
  if (start >= pairs_.size()) return bytes;
  bytes.reserve(std::min(std::size_t(Val(pairs_[start].second)), LoadContext::kMaxTextBytes));
  for (std::size_t k = start + 1; k < pairs_.size() && pairs_[k].first == 310; ++k)
    AppendHex(pairs_[k].second, bytes);
  return bytes;
}

// CLASS (CLASSES section): the DXF names of the classes in their order, which the
// application class number of an ACAD_PROXY_ENTITY (91, from 500) counts.
bool ModernReader::DXFClass() {
  if (classes_.size() < 65536) classes_.push_back(std::string(Trim(Text(1)).substr(0, 64)));
  return true;
}

// The name the load report gives an entity drawn from its proxy graphics: its own, or
// for ACAD_PROXY_ENTITY the class it stands for.
std::string ModernReader::ProxyClassName() const {
  std::string name(name_.substr(0, 64));
  if (name != "ACAD_PROXY_ENTITY") return name;
  const int32_t id = Whole(91, 0, 0, 1 << 20) - 500;
  if (id >= 0 && std::size_t(id) < classes_.size() && !classes_[std::size_t(id)].empty())
    name += " (" + classes_[std::size_t(id)] + ")";
  return name;
}

// The style of a proxy shape: what its pen set, the entity's own for the rest.
ModernReader::Style ModernReader::ProxyStyle(const ProxyPen& pen, const Style& own) {
  Style s = own;
  if (pen.Layer >= 0 && std::size_t(pen.Layer) < tableLayers_.size())
    s.Layer = tableLayers_[std::size_t(pen.Layer)];
  const LayerEntry& layer = drawing_.Layers[std::size_t(s.Layer - 1)];
  if (pen.Rgb >= 0)
    s.Color = TrueColorValue(uint32_t(pen.Rgb), pen.Aci);
  else if (pen.Aci >= 1 && pen.Aci <= 255)
    s.Color = AciColor(pen.Aci);
  else if (pen.Aci == 256)
    s.Color = 0;
  std::string_view lineType;
  if (pen.LineType >= 0 && std::size_t(pen.LineType) < tableLineTypes_.size())
    lineType = tableLineTypes_[std::size_t(pen.LineType)];
  if (pen.LineType == ProxyPen::kByLayer || SameName(lineType, "ByLayer"))
    s.LineType = output_ ? kLineTypeByLayer : layer.LineType;
  else if (!lineType.empty() && !SameName(lineType, "ByBlock"))
    s.LineType = LineTypeOfName(lineType);
  if (pen.LineWeight == kWeightByLayer)
    s.LineWeight = output_ ? kWeightByLayer : layer.LineWeight;
  else if (pen.LineWeight == kWeightDefault || (pen.LineWeight >= 0 && pen.LineWeight <= 211))
    s.LineWeight = int16_t(pen.LineWeight);
  return s;
}

void ModernReader::EmitProxyShape(const ProxyShape& shape, const Style& own) {
  const Style s = ProxyStyle(shape.Pen, own);
  switch (shape.Type) {
    case ProxyShape::Kind::Path: {
      if (shape.Filled) {
        HatchEntity fill;
        fill.Layer = s.Layer, fill.Color = s.Color;
        fill.Points = shape.Points;
        fill.LoopStarts.push_back(0);
        Emit(Placed(fill, toBlock_));
        return;
      }
      std::vector<PathVertex> vertices;
      vertices.reserve(shape.Points.size());
      for (std::size_t i = 0; i < shape.Points.size(); ++i)
        vertices.push_back({shape.Points[i], i < shape.Bulges.size() ? shape.Bulges[i] : 0});
      EmitPolylinePath(vertices, shape.Closed, s, toBlock_);
      return;
    }
    case ProxyShape::Kind::Arc: {
      const bool whole = shape.End - shape.Start >= 2 * M_PI - 1e-12;
      ArcEntity arc{0,
                    0,
                    shape.Radius,
                    whole ? 0 : Degrees(shape.Start),
                    whole ? 0 : Degrees(shape.End),
                    s.Layer,
                    s.Color,
                    s.LineType,
                    s.LineWeight};
      PlaceInto(arc, toBlock_ * shape.Frame, [this](const auto& row) { Emit(row); });
      return;
    }
    case ProxyShape::Kind::Text: {
      const std::string text =
          shape.Unicode ? shape.Text : DecodeCodePage(shape.Text, ctx_.decoder.codePage());
      TextEntity t = StyledText(TextMarkup(text), shape.Height, s, 0);
      t.WidthFactor = shape.WidthFactor;
      t.Oblique = shape.Oblique;
      Emit(Placed(t, toBlock_ * shape.Frame));
      return;
    }
  }
}

// An entity of a class this reader does not know that carries proxy graphics: drawn
// from them, and counted by class in the load report.
bool ModernReader::DXFProxy() {
  const Style own = ReadStyle();
  const ProxyGraphics graphics = DecodeProxyGraphics(ProxyGraphicsBytes());
  const std::string name = ProxyClassName();
  if (graphics.Shapes.empty()) {
    Note("entity kind not drawn (its proxy graphics draw nothing): " + name);
    return true;
  }
  for (const ProxyShape& shape : graphics.Shapes) EmitProxyShape(shape, own);
  ctx_.outcome.Report.NoteDrawn("drawn from proxy graphics: " + name, recordLine_);
  if (graphics.Damaged) Note("proxy graphics cut short: " + name);
  return true;
}

}  // namespace dxfimport
