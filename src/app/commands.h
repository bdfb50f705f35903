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
// With --json, the drawing's geolocation too (`crs`: the system the user names, EPSG:n).
int RunStats(const std::string& file, bool json, ReadingProfile profile, const LoadOptions& options = {},
             const PictureView& view = {}, const std::string& crs = {});
// True when `crs` is empty or names a system PROJ knows; otherwise says so for `command`.
bool CrsOptionUsable(const std::string& crs, const char* command);
int RunDump(const std::string& file, ReadingProfile profile, const LoadOptions& options = {});

}  // namespace dxfimport
