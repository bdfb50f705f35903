#pragma once

#include <cstddef>
#include <string>

namespace dxfimport::bench {

// Writes a deterministic synthetic R12 drawing of about `bytes` bytes: a layer table, a
// few blocks, and a realistic mix of entities (mostly lines, then polylines of 4 to 10
// vertices, arcs, circles, texts, inserts and solids) with 6-decimal coordinates.
std::string SyntheticDrawing(std::size_t bytes);

// The synthetic drawing of `megabytes` MB, written under `dir` once and reused; its path.
std::string SyntheticDrawingFile(const std::string& dir, int megabytes);

}  // namespace dxfimport::bench
