#pragma once

#include <cstddef>
#include <string>

namespace dxfimport::bench {

// R12: the entities as AutoCAD Release 12 wrote them. R2000: as AutoCAD 2000 and later
// write them, every entity with its handle (5), owner (330) and subclass markers (100),
// polylines as LWPOLYLINE, code page and version in the header.
enum class SyntheticStyle { R12, R2000 };

// Writes a deterministic synthetic drawing of about `bytes` bytes: a layer table, a few
// blocks, and a realistic mix of entities (mostly lines, then polylines of 4 to 10
// vertices, arcs, circles, texts, inserts and solids) with 6-decimal coordinates.
std::string SyntheticDrawing(std::size_t bytes, SyntheticStyle style = SyntheticStyle::R12);

// The synthetic drawing of `megabytes` MB, written under `dir` once and reused; its path.
std::string SyntheticDrawingFile(const std::string& dir, int megabytes,
                                 SyntheticStyle style = SyntheticStyle::R12);

// A drawing of `count` MTEXT entities of one paragraph each (a cable label of a few
// words that wraps to two lines at its width), in a grid of 125 columns; written under
// `dir` once and reused; its path.
std::string MTextDrawingFile(const std::string& dir, int count);

// 200,000 inserts of one symbol of 50 entities (40 lines, 10 circles), turned and spread
// over a grid: 10 million rows once expanded, an honest big drawing. Written under `dir`
// once and reused; its path.
std::string SymbolGridDrawingFile(const std::string& dir);

// Nine blocks, each inserting the one before ten times (10^9 lines once expanded),
// inserted once, beside one ordinary line and one circle. Written under `dir` once and
// reused; its path.
std::string NestedBlocksDrawingFile(const std::string& dir);

}  // namespace dxfimport::bench
