// Viewports and layouts of the modern profile: which layout is drawn, and model space
// seen through a layout's viewports.
#include <algorithm>
#include <cctype>
#include <cmath>

#include "dxf/model/colors.h"
#include "dxf/model/dimension_drawing.h"
#include "dxf/model/extents.h"
#include "dxf/model/mtext.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/log.h"
#include "support/numbers.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

std::string Upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = char(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

bool IsPaperSpaceName(std::string_view name) {
  const std::string upper = Upper(name);
  return upper.starts_with("*PAPER_SPACE") || upper.starts_with("$PAPER_SPACE");
}

}  // namespace

// LAYOUT object: its name (1) and its block record (330, the last of the record).
bool ModernReader::DXFLayout() {
  std::string_view owner;
  for (const auto& [code, value] : pairs_)
    if (code == 330) owner = value;
  layouts_.emplace_back(std::string(Trim(Text(1))), std::string(Trim(owner)));
  return true;
}

// VIEWPORT (paper space): its frame, except the layout's own viewport (69 = 1) and one
// that is off (90 bit 17); a plan view of model space is kept to be shown in it.
bool ModernReader::DXFViewport() {
  if (Whole(69, 0, -32768, 32767) == 1 || (Whole(90, 0, INT32_MIN, INT32_MAX) & 0x20000)) return true;
  const Style style = ReadStyle();
  const PointD c = Point(10);
  const double w = Num(40) / 2, h = Num(41) / 2;
  const PointD corners[4] = {{c.x - w, c.y - h}, {c.x + w, c.y - h}, {c.x + w, c.y + h}, {c.x - w, c.y + h}};
  for (int i = 0; i < 4; ++i) {
    LineEntity edge{corners[i].x, corners[i].y, corners[(i + 1) % 4].x, corners[(i + 1) % 4].y,
                    style.Layer,  style.Color,  style.LineType,         style.LineWeight};
    Emit(Placed(edge, toBlock_));
  }
  const bool plan = Num(16) == 0 && Num(26) == 0 && Num(36, 1) > 0;
  if (output_ && plan && Num(45) > 0 && w > 0 && h > 0) {
    viewports_.push_back({output_, toBlock_.Apply(c), 2 * w, 2 * h, Point(12), Point(17), Num(45), Num(51)});
  }
  return true;
}

// The model space seen through the layout's viewports: each viewport's copy of the model
// rows, scaled and turned into the viewport and clipped to it, drawn below the layout.
void ModernReader::ShowModelSpaceIn(int32_t layout, const EntityTables& model) {
  for (const Viewport& v : viewports_) {
    if (v.layout != layout) continue;
    if (int64_t(model.DrawSeq.size()) > budget_ - int64_t(drawing_.StoredRows())) {
      Note("viewport over the entity budget", "A viewport of the layout left out: over the entity budget");
      continue;
    }
    const double scale = v.height / v.viewHeight;
    const Affine toPaper = Affine::Translate(v.centre.x, v.centre.y) * Affine::Scaling(scale, scale) *
                           Affine::Translate(-v.viewCentre.x, -v.viewCentre.y) * Affine::Rotate(-v.twist) *
                           Affine::Translate(-v.target.x, -v.target.y);
    const double w = v.width / 2, h = v.height / 2;
    drawing_.Clips.push_back({{{{v.centre.x - w, v.centre.y - h},
                                {v.centre.x + w, v.centre.y - h},
                                {v.centre.x + w, v.centre.y + h},
                                {v.centre.x - w, v.centre.y + h}}}});
    drawing_.DrawSeq.push_back({kKindClip, int32_t(drawing_.Clips.size())});
    for (const SeqEntry& entry : model.DrawSeq) {
      if (entry.Kind == kKindClip) {  // a clipped block reference of model space
        if (entry.Index >= 1 && std::size_t(entry.Index) <= drawing_.Clips.size()) {
          ClipRegion clip = drawing_.Clips[std::size_t(entry.Index - 1)];
          for (auto& loop : clip.Loops)
            for (PointD& p : loop) p = toPaper.Apply(p);
          drawing_.Clips.push_back(std::move(clip));
          drawing_.DrawSeq.push_back({kKindClip, int32_t(drawing_.Clips.size())});
        } else {
          drawing_.DrawSeq.push_back({kKindClip, 0});
        }
        continue;
      }
      VisitRow(model, entry, [&](const auto& row) {
        if constexpr (!std::is_same_v<std::decay_t<decltype(row)>, InsertRef>) {
          PlaceInto(row, toPaper, [this](const auto& placed) { drawing_.Add(placed); });
          Tick();
        }
      });
    }
    drawing_.DrawSeq.push_back({kKindClip, 0});
  }
}

// The block that holds the paper-space entities of the ENTITIES section (67 = 1).
int32_t ModernReader::PaperSpaceBlock() {
  if (paperSpace_) return paperSpace_;
  for (int32_t i = 1; i <= drawing_.BlockCount(); ++i) {
    if (SameName(drawing_.Blocks[std::size_t(i - 1)].Name, "*PAPER_SPACE")) return paperSpace_ = i;
  }
  BlockEntry entry;
  entry.Name = "*Paper_Space";
  entry.Defined = true;
  return paperSpace_ = drawing_.AddBlock(std::move(entry));
}

// After the load: the layout the caller asked for replaces model space; when model space
// holds nothing, the active paper-space layout (or the first one with content) is drawn.
void ModernReader::ChooseLayout() {
  const std::string& wanted = ctx_.options.Layout;
  const bool modelEmpty = drawing_.SeqCount() == 0;
  for (const auto& [layout, handle] : layouts_)
    if (!SameName(layout, "MODEL") && !layout.empty()) ctx_.outcome.Layouts.push_back(layout);
  if (wanted.empty() && !modelEmpty) return;
  if (SameName(wanted, "MODEL")) return;
  int32_t block = 0;
  std::string name;
  auto hasContent = [this](int32_t row) {
    return row && !drawing_.Blocks[std::size_t(row - 1)].Content.DrawSeq.empty();
  };
  for (const auto& [layout, handle] : layouts_) {
    auto record = blockRecords_.find(handle);
    if (record == blockRecords_.end()) continue;
    int32_t row = drawing_.FindBlock(record->second);
    bool chosen = wanted.empty() ? (IsPaperSpaceName(record->second) && hasContent(row) &&
                                    (!block || SameName(record->second, "*PAPER_SPACE")))
                                 : SameName(layout, wanted) || SameName(record->second, wanted);
    if (chosen) block = row, name = layout;
  }
  if (!block) {
    for (int32_t i = 1; i <= drawing_.BlockCount() && !block; ++i) {
      const std::string& blockName = drawing_.Blocks[std::size_t(i - 1)].Name;
      bool chosen =
          wanted.empty() ? IsPaperSpaceName(blockName) && hasContent(i) : SameName(blockName, wanted);
      if (chosen) block = i, name = blockName;
    }
  }
  if (!block) {
    if (!wanted.empty()) LogCritical("The drawing has no layout named " + wanted + "; model space is drawn.");
    return;
  }
  EntityTables model = std::move(static_cast<EntityTables&>(drawing_));
  drawing_.EntityTables::Clear();
  DrawLayout(block);
  // The layout's own rows set the extents; the model space shown in its viewports goes
  // below them in the drawing order.
  layoutBox_ = WithMargin(TablesBox(drawing_));
  const std::size_t own = drawing_.DrawSeq.size();
  if (!modelEmpty) ShowModelSpaceIn(block, model);
  std::rotate(drawing_.DrawSeq.begin(), drawing_.DrawSeq.begin() + std::ptrdiff_t(own),
              drawing_.DrawSeq.end());
  ctx_.outcome.Layout = name;
  ctx_.outcome.ModelSpaceEmpty = modelEmpty;
  LogDebug((modelEmpty ? "Model space is empty; drawing the layout " : "Drawing the layout ") + name);
}

void ModernReader::DrawLayout(int32_t block) {
  if (!InsertAllowed(block)) return;
  const int32_t zero = layerZero_ ? layerZero_ : 1;
  const BlockEntry& b = drawing_.Blocks[std::size_t(block - 1)];
  ExpandBlock(block, Affine::Translate(b.BaseX, b.BaseY), Style{zero, kForeground, 0, kWeightDefault}, 1);
}

}  // namespace dxfimport
