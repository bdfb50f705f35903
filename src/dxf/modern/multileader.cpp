// MULTILEADER. One whose CAD tool saved its graphics (AutoCAD does by default) is drawn
// from them, as that tool drew it; any other from its context data: each leader's lines
// (straight or spline) from the arrowhead through its vertices to the landing and the
// dogleg, the arrowhead (its block, or the closed filled one) at the first vertex, and
// the content: MTEXT with its attachment, background and frame, or a block.
#include <algorithm>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/extents.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

// The colour of a raw colour value (the high byte says how: 0xC0 by layer, 0xC1 by
// block, 0xC2 the RGB below it, 0xC3 a colour number).
int32_t RawColor(double value, bool inBlock) {
  const auto raw = uint32_t(int64_t(value));
  switch (raw >> 24) {
    case 0xC2:
      return TrueColorValue(raw & 0xFFFFFF, 0);
    case 0xC3:
      return AciColor(int(raw & 0xFF));
    case 0xC1:
      return inBlock ? kColorByBlock : kForeground;
    default:
      return 0;
  }
}

// A smooth curve through the points (a Catmull-Rom spline), eight pieces a span.
std::vector<PointD> CurveThrough(const std::vector<PointD>& p) {
  if (p.size() < 3) return p;
  std::vector<PointD> out{p.front()};
  for (std::size_t i = 0; i + 1 < p.size(); ++i) {
    const PointD p0 = i > 0 ? p[i - 1] : p[i], p1 = p[i], p2 = p[i + 1],
                 p3 = i + 2 < p.size() ? p[i + 2] : p[i + 1];
    for (int k = 1; k <= 8; ++k) {
      const double t = k / 8.0, t2 = t * t, t3 = t2 * t;
      out.push_back(
          (p1 * 2 + (p2 - p0) * t + (p0 * 2 - p1 * 5 + p2 * 4 - p3) * t2 + (p1 * 3 - p0 - p2 * 3 + p3) * t3) *
          0.5);
    }
  }
  return out;
}

}  // namespace

// The parts of a MULTILEADER's record: the context data (between 300 and 301), its
// leaders (302, 303) and their lines (304, 305), and the entity's own groups after it.
ModernReader::LeaderData ModernReader::ReadLeaderData() const {
  LeaderData d;
  int depth = 0;  // 0 the entity, 1 the context, 2 a leader, 3 a leader line
  bool afterContext = false;
  for (const auto& [code, value] : pairs_) {
    const std::string_view v = Trim(value);
    if (code == 300 && v == "CONTEXT_DATA{")
      depth = 1;
    else if (code == 301 && depth == 1)
      depth = 0, afterContext = true;
    else if (code == 302 && v == "LEADER{" && depth == 1)
      depth = 2, d.leaders.emplace_back();
    else if (code == 303 && depth == 2)
      depth = 1;
    else if (code == 304 && v == "LEADER_LINE{" && depth == 2)
      depth = 3, d.leaders.back().lines.emplace_back();
    else if (code == 305 && depth == 3)
      depth = 2;
    else if (depth == 3 && d.leaders.back().lines.back().size() < 10000 && (code == 10 || code == 20)) {
      auto& line = d.leaders.back().lines.back();
      if (code == 10)
        line.push_back({Val(v), 0});
      else if (!line.empty())
        line.back().y = Val(v);
    } else if (depth == 2) {
      Leader& l = d.leaders.back();
      if (code == 10) l.last.x = Val(v), l.hasLast = true;
      if (code == 20) l.last.y = Val(v);
      if (code == 11) l.dogleg.x = Val(v);
      if (code == 21) l.dogleg.y = Val(v);
      if (code == 40) l.doglegLength = Val(v);
    } else if (depth == 1) {
      switch (code) {
        case 40:
          d.scale = Val(v);
          break;
        case 41:
          d.textHeight = Val(v);
          break;
        case 140:
          d.arrowSize = Val(v);
          break;
        case 145:
          d.landingGap = Val(v);
          break;
        case 290:
          d.hasText = Val(v) != 0;
          break;
        case 304:
          if (d.text.size() < LoadContext::kMaxTextBytes) d.text.append(value);
          break;
        case 12:
          d.textAt.x = Val(v);
          break;
        case 22:
          d.textAt.y = Val(v);
          break;
        case 13:
          d.textDirection.x = Val(v);
          break;
        case 23:
          d.textDirection.y = Val(v);
          break;
        case 43:
          d.textWidth = Val(v);
          break;
        case 171:
          d.attachment = int32_t(HeldWhole(Val(v), 1, 9));
          break;
        case 90:
          d.textColor = Val(v);
          break;
        case 91:
          d.fillColor = Val(v);
          break;
        case 141:
          d.fillScale = Val(v);
          break;
        case 292:
          d.fill = Val(v) != 0;
          break;
        case 296:
          d.hasBlock = Val(v) != 0;
          break;
        case 341:
          d.block = std::string(v);
          break;
        case 15:
          d.blockAt.x = Val(v);
          break;
        case 25:
          d.blockAt.y = Val(v);
          break;
        case 16:
          d.blockScale.x = Val(v);
          break;
        case 26:
          d.blockScale.y = Val(v);
          break;
        case 46:
          d.blockRotation = Val(v);
          break;
        case 93:
          d.blockColor = Val(v);
          break;
        default:
          break;
      }
    } else {
      switch (code) {
        case 170:
          d.ownValues = true;
          d.lineKind = int32_t(HeldWhole(Val(v), 0, 2));
          break;
        case 91:
          d.lineColor = Val(v);
          break;
        case 291:
          d.doglegOn = Val(v) != 0;
          break;
        case 342:
          d.arrowBlock = std::string(v);
          break;
        case 42:
          if (!(d.arrowSize > 0)) d.arrowSize = Val(v);
          break;
        case 292:
          d.frame = Val(v) != 0;
          break;
        case 340:
          d.style = std::string(v);
          break;
        case 330:  // before the context data: the owner
          if (afterContext) d.attributes.emplace_back(HandleOf(v), "");
          break;
        case 302:
          if (!d.attributes.empty()) d.attributes.back().second = std::string(value.substr(0, 4096));
          break;
        default:
          break;
      }
    }
  }
  return d;
}

bool ModernReader::DXFMultiLeader() {
  if (HasProxyGraphics()) return DXFProxy();
  const Style own = ReadStyle();
  LeaderData d = ReadLeaderData();
  // One that leaves its values to its MLEADERSTYLE, which comes later in the file, is
  // drawn when the drawing has been read (on top of model space).
  if (!d.ownValues && !d.style.empty() && output_ == 0 && pendingLeaders_.size() < 100000) {
    pendingLeaders_.push_back({std::move(d), own});
    return true;
  }
  EmitLeader(d, own);
  return true;
}

// MLEADERSTYLE: what its MULTILEADERs take when they do not say.
bool ModernReader::DXFMLeaderStyle() {
  LeaderData& s = leaderStyles_[std::string(Trim(Value(5)))];
  s.lineKind = Whole(173, 1, 0, 2);
  if (Has(91)) s.lineColor = Num(91);
  s.doglegOn = Whole(291, 1, 0, 1) != 0;
  s.landingGap = Num(42);
  s.arrowBlock = std::string(Trim(Value(341)));
  s.arrowSize = Num(44, 0.18) * Num(142, 1);
  if (Has(93)) s.textColor = Num(93);
  s.textHeight = Num(45, 0.18) * Num(142, 1);
  s.frame = Whole(292, 0, 0, 1) != 0;
  s.leaders.push_back({{}, {}, {1, 0}, false, Num(43, 0.36) * Num(142, 1)});
  return true;
}

// The MULTILEADERs left to their style, now that the styles are known.
void ModernReader::FinishPendingLeaders() {
  for (PendingLeader& p : pendingLeaders_) {
    LeaderData& d = p.data;
    const auto found = leaderStyles_.find(d.style);
    if (found != leaderStyles_.end()) {
      const LeaderData& s = found->second;
      d.lineKind = s.lineKind;
      if (!d.lineColor) d.lineColor = s.lineColor;
      d.doglegOn = s.doglegOn;
      if (!(d.landingGap > 0)) d.landingGap = s.landingGap;
      if (d.arrowBlock.empty()) d.arrowBlock = s.arrowBlock;
      if (!(d.arrowSize > 0)) d.arrowSize = s.arrowSize;
      if (!d.textColor) d.textColor = s.textColor;
      if (!(d.textHeight > 0)) d.textHeight = s.textHeight;
      d.frame = d.frame || s.frame;
      for (Leader& l : d.leaders)
        if (!(l.doglegLength > 0)) l.doglegLength = s.leaders.front().doglegLength;
    }
    output_ = 0, toBlock_ = {};
    entityAlpha_ = p.own.Alpha;
    EmitLeader(d, p.own);
  }
  pendingLeaders_.clear();
}

void ModernReader::EmitLeader(const LeaderData& d, const Style& own) {
  Style lines = own;
  if (d.lineColor) lines.Color = RawColor(*d.lineColor, output_ != 0);
  for (const Leader& leader : d.leaders) {
    for (const std::vector<PointD>& line : leader.lines) {
      std::vector<PointD> points = line;
      if (leader.hasLast) points.push_back(leader.last);
      if (points.empty()) continue;
      if (d.doglegOn && leader.hasLast && leader.doglegLength > 0)
        points.push_back(leader.last +
                         leader.dogleg * (leader.doglegLength / std::max(1e-12, Length(leader.dogleg))));
      for (PointD& p : points) p = toBlock_.Apply(p);
      if (d.lineKind != 0) EmitCurve(d.lineKind == 2 ? CurveThrough(points) : points, lines);
      if (points.size() >= 2) EmitArrowhead(points[0], points[1], d, lines);
    }
  }
  if (d.hasText && !d.text.empty()) EmitLeaderText(d, own);
  if (d.hasBlock) EmitLeaderBlock(d, own);
}

// The arrowhead at `tip`, pointing away from `from`: the arrow block drawn at the arrow's
// size, or the closed filled one.
void ModernReader::EmitArrowhead(PointD tip, PointD from, const LeaderData& d, const Style& s) {
  const double size = d.arrowSize;
  const PointD along = tip - from;
  const double l = Length(along);
  if (!(size > 0) || !(l > 0)) return;
  const auto named = blockRecords_.find(d.arrowBlock);
  const int32_t block = named == blockRecords_.end() ? 0 : drawing_.FindBlock(named->second);
  if (block && drawing_.Blocks[std::size_t(block - 1)].Defined) {
    InsertRef ref;
    ref.Block = block;
    ref.Frame = Affine::Translate(tip.x, tip.y) * Affine::Rotate(Degrees(std::atan2(along.y, along.x)));
    ref.Local = Affine::Scaling(size, size);
    ref.Layer = s.Layer, ref.Color = s.Color, ref.LineType = s.LineType, ref.LineWeight = s.LineWeight;
    ref.Alpha = s.Alpha;
    return PlaceInsert(ref);
  }
  const PointD u = along * (1 / l), side{-u.y * size / 6, u.x * size / 6}, back = tip - u * size;
  const PointD b1 = back + side, b2 = back - side;
  Emit(SolidEntity{tip.x, tip.y, b1.x, b1.y, b2.x, b2.y, b2.x, b2.y, s.Layer, s.Color});
}

void ModernReader::EmitLeaderText(const LeaderData& d, const Style& own) {
  MTextEntity m;
  m.Content = ctx_.decoder.Decode(d.text);
  m.Layer = own.Layer;
  m.Color = d.textColor ? RawColor(*d.textColor, output_ != 0) : own.Color;
  m.Style = StyleRow("");
  m.Height = d.textHeight > 0 ? d.textHeight : 0.18 * d.scale;
  m.Width = std::max(0.0, d.textWidth);
  m.Attachment = d.attachment;
  m.X = d.textAt.x, m.Y = d.textAt.y;
  m.Rotation = Degrees(std::atan2(d.textDirection.y, d.textDirection.x));
  if (d.fill) {
    m.FillFlags = 1;
    m.FillColor = d.fillColor ? RawColor(*d.fillColor, output_ != 0) : kForeground;
    if (d.fillScale > 0) m.FillScale = d.fillScale;
  }
  const MTextEntity placed = Placed(m, toBlock_);
  Emit(placed);
  if (!d.frame) return;
  // The frame around the text, the landing gap away from it.
  Box box = RowBox(placed);
  if (box.Empty()) return;
  const double gap = std::max(0.0, d.landingGap);
  const std::vector<PointD> frame{{box.minX - gap, box.minY - gap},
                                  {box.maxX + gap, box.minY - gap},
                                  {box.maxX + gap, box.maxY + gap},
                                  {box.minX - gap, box.maxY + gap}};
  Style s = own;
  s.Color = m.Color;
  EmitCurve(frame, s, true);
}

void ModernReader::EmitLeaderBlock(const LeaderData& d, const Style& own) {
  const auto named = blockRecords_.find(d.block);
  const int32_t block = named == blockRecords_.end() ? 0 : drawing_.FindBlock(named->second);
  if (!block) return;
  InsertRef ref;
  ref.Block = block;
  ref.Frame =
      toBlock_ * Affine::Translate(d.blockAt.x, d.blockAt.y) * Affine::Rotate(Degrees(d.blockRotation));
  ref.Local =
      Affine::Scaling(d.blockScale.x == 0 ? 1 : d.blockScale.x, d.blockScale.y == 0 ? 1 : d.blockScale.y);
  ref.Layer = own.Layer, ref.LineType = own.LineType, ref.LineWeight = own.LineWeight, ref.Alpha = own.Alpha;
  ref.Color = d.blockColor ? RawColor(*d.blockColor, output_ != 0) : own.Color;
  PlaceInsert(ref);
  // Its attributes: each definition's text with the value the MULTILEADER gives.
  // (The definitions are kept relative to their block's base point, as its rows are.)
  const Affine place = ref.Frame * ref.Local;
  for (const auto& [handle, value] : d.attributes) {
    const auto definition = attributeDefinitions_.find(handle);
    if (definition == attributeDefinitions_.end()) continue;
    TextEntity text = definition->second;
    text.Text = TextMarkup(ctx_.decoder.Decode(value));
    text.Layer = own.Layer;
    if (text.Color == kColorByBlock || text.Color == 0) text.Color = ref.Color;
    Emit(Placed(text, place));
  }
}

}  // namespace dxfimport
