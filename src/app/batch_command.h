#pragma once

#include <string>
#include <vector>

#include "app/render_command.h"

namespace dxfimport {

// The time a batch gives one file by default: far beyond what the largest drawings take.
inline constexpr double kDefaultFileSeconds = 300;

// Draws several drawings with the same options into the folder `options.output` (made
// when missing), each to <name>.<format> (bmp, png, svg or pdf), each in a child process,
// `jobs` at a time. A line on standard error says how each file went as it ends; a
// Markdown table at the end (standard output) names every file with its status (ok,
// incomplete, failed, crashed, timed out), its seconds and what its load left out or reported.
// Returns 0 when every picture was drawn from a complete read, else 1 (2 for bad options).
// The .dxf files (any case) under a folder and its subfolders, sorted by path.
std::vector<std::string> DxfFilesUnder(const std::string& dir);

// The files to draw: each file as it is, each folder its .dxf files.
std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs);

// A file still drawing after `fileSeconds` (0: no limit) has its worker ended and is a
// row "timed out"; the other files go on.
int RunRenderBatch(const RenderOptions& options, const std::vector<std::string>& files,
                   const std::string& format, int jobs, double fileSeconds = kDefaultFileSeconds);

}  // namespace dxfimport
