// External references: a BLOCK flagged as one (70 bit 2) names a drawing (1) whose model
// space is its content. The drawing is read with this profile into a drawing of its own
// (its blocks, styles and line types stay its own) and its rows are put into the block,
// its layers shown as REFERENCE|LAYER beside the host's.
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "dxf/input/binary_dxf.h"
#include "dxf/input/file_lookup.h"
#include "dxf/model/placement.h"
#include "dxf/modern/modern_reader.h"
#include "support/text_decode.h"

namespace dxfimport {
namespace {

constexpr std::size_t kMaxReferenceDepth = 8;

std::string Canonical(const std::string& path) {
  std::error_code ec;
  const std::filesystem::path p = std::filesystem::weakly_canonical(path, ec);
  return ec ? path : p.string();
}

bool IsDwgName(const std::string& name) {
  return name.size() > 4 && SameName(std::string_view(name).substr(name.size() - 4), ".dwg");
}

}  // namespace

// The file of a reference: the DXF it names, or a DXF of the same name beside a DWG it
// names (CAD tools save one beside the other). "" when there is none.
std::string ModernReader::ReferenceFile(const std::string& written) const {
  const auto& folders = ctx_.options.XrefFolders;
  if (!IsDwgName(written)) return FindReferencedFile(written, ctx_.options.DrawingFile, folders);
  return FindReferencedFile(written.substr(0, written.size() - 4) + ".dxf", ctx_.options.DrawingFile,
                            folders);
}

void ModernReader::LoadExternalReference(int32_t block, const std::string& written) {
  const std::string name = drawing_.Blocks[std::size_t(block - 1)].Name;
  const std::string shown = written.substr(0, 200);
  if (written.empty()) return Note("external reference without a file: " + name);
  const std::string file = ReferenceFile(written);
  if (file.empty())
    return Note((IsDwgName(written) ? "external reference is a DWG file, not drawn: "
                                    : "external reference missing: ") +
                shown);
  std::vector<std::string> chain = ctx_.options.XrefChain;
  if (!ctx_.options.DrawingFile.empty() && chain.empty())
    chain.push_back(Canonical(ctx_.options.DrawingFile));
  const std::string canonical = Canonical(file);
  if (std::find(chain.begin(), chain.end(), canonical) != chain.end())
    return Note("external reference that refers back to itself, left out: " + shown);
  if (chain.size() >= kMaxReferenceDepth)
    return Note("external reference nested too deep, left out: " + shown);
  chain.push_back(canonical);

  LineSource source;
  try {
    source.Open(file);
  } catch (const RunTimeError&) {
    return Note("external reference missing: " + shown);
  }
  std::string converted;
  if (IsBinaryDxf(source.bytes()) && !ConvertBinaryDxf(source, converted))
    return Note("external reference is not a drawing: " + shown);
  Drawing reference;
  reference.InitDrawing(true);
  reference.SetRules(drawing_.Rules());
  LoadOptions options;
  options.DrawingFile = file;
  options.ImageFolders = ctx_.options.ImageFolders;
  options.XrefFolders = ctx_.options.XrefFolders;
  options.XrefChain = std::move(chain);
  options.EntityBudget = std::max<int64_t>(1, budget_ - int64_t(drawing_.StoredRows()));
  LoadOutcome outcome;
  LoadContext context(reference, source, options, outcome, nullptr);
  ModernReader(context).Read();
  for (const ReportEntry& e : outcome.Report.Entries())
    for (int64_t i = 0; i < std::min<int64_t>(e.Count, 1000); ++i) {
      if (e.Drawn)
        ctx_.outcome.Report.NoteDrawn("in " + name + ": " + e.Kind, recordLine_);
      else
        Note("in " + name + ": " + e.Kind);
    }
  ctx_.outcome.Report.NoteDrawn("external reference drawn: " + shown, recordLine_);
  PutReferenceIn(reference, block);
}

// The reference's rows into the block, relative to its base point, their layers, text
// styles, line types and pictures added to the host's under the reference's name.
void ModernReader::PutReferenceIn(const Drawing& reference, int32_t block) {
  const BlockEntry& b = drawing_.Blocks[std::size_t(block - 1)];
  const std::string prefix = b.Name + "|";
  const Affine place = Affine::Translate(-b.BaseX, -b.BaseY);
  std::vector<int32_t> layers(reference.Layers.size() + 1, 0);
  const int32_t dashes = int32_t(drawing_.DashPatterns.size());
  for (const auto& pattern : reference.DashPatterns) drawing_.DashPatterns.push_back(pattern);
  auto lineType = [dashes](int32_t style) {
    return style >= Drawing::kFirstDashPattern ? style + dashes : style;
  };
  for (std::size_t i = 0; i < reference.Layers.size(); ++i) {
    LayerEntry layer = reference.Layers[i];
    if (SameName(layer.Name, "0")) {
      layers[i + 1] = LayerZero();
      continue;
    }
    layer.Name = prefix + layer.Name;
    layer.LineType = lineType(layer.LineType);
    if (!(layers[i + 1] = drawing_.FindLayer(layer.Name))) {
      drawing_.AddLayer(std::move(layer));
      layers[i + 1] = drawing_.LayerCount();
    }
  }
  const int32_t styles = int32_t(drawing_.TextStyles.size());
  for (TextStyle style : reference.TextStyles) {
    style.Name = prefix + style.Name;
    drawing_.TextStyles.push_back(std::move(style));
  }
  const int32_t pictures = int32_t(drawing_.Pictures.size());
  for (const PictureFile& picture : reference.Pictures) drawing_.Pictures.push_back(picture);
  auto layerOf = [&layers](int32_t row) {
    return row >= 1 && std::size_t(row) < layers.size() ? layers[std::size_t(row)] : row;
  };
  auto restyle = [&](auto& row) {
    row.Layer = layerOf(row.Layer);
    if (row.Color & kColorOfLayer) row.Color = kColorOfLayer | layerOf(row.Color & 0xFFFFFF);
    if constexpr (requires { row.LineType; }) row.LineType = lineType(row.LineType);
    if constexpr (requires { row.Style; })
      if (row.Style > 0) row.Style += styles;
    if constexpr (requires { row.Picture; })
      if (row.Picture > 0) row.Picture += pictures;
  };
  BlockEntry& host = drawing_.Blocks[std::size_t(block - 1)];
  const int32_t clips = int32_t(host.Clips.size());
  for (ClipRegion region : reference.Clips) {
    for (auto& loop : region.Loops)
      for (PointD& p : loop) p = place.Apply(p);
    host.Clips.push_back(std::move(region));
  }
  for (const SeqEntry& entry : reference.DrawSeq) {
    if (entry.Kind == kKindClip) {
      host.Content.DrawSeq.push_back({kKindClip, entry.Index > 0 ? entry.Index + clips : 0});
      continue;
    }
    VisitRow(reference, entry, [&](const auto& stored) {
      using Row = std::decay_t<decltype(stored)>;
      if constexpr (!std::is_same_v<Row, InsertRef>) {
        Row row = stored;
        if constexpr (std::is_same_v<Row, AttribEntity>)
          restyle(row.Text);
        else
          restyle(row);
        PlaceInto(row, place, [this, block](const auto& placed) { drawing_.AddBlockRecord(block, placed); });
      }
    });
  }
}

}  // namespace dxfimport
