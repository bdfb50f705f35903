#pragma once

#include <optional>
#include <string>

#include "dxf/reader.h"
#include "render/engine.h"

namespace dxfimport {

// Command-line subcommands. Each returns the process exit status: 0 done, 1 the drawing
// could not be read (the system's message is on standard error).
// `options` carry the entity budget of the modern profile.
// The JSON form of stats also holds the placement of a picture of the drawing: `view`'s
// window (default: the extents) on its width x height pixels.
struct PictureView {
  std::optional<ZoomRect> window;
  int width = 640, height = 480;
};
int RunStats(const std::string& file, bool json, ReadingProfile profile, const LoadOptions& options = {},
             const PictureView& view = {});
int RunDump(const std::string& file, ReadingProfile profile, const LoadOptions& options = {});

}  // namespace dxfimport
