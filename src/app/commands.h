#pragma once

#include <string>

#include "dxf/reader.h"

namespace dxfimport {

// Command-line subcommands. Each returns the process exit status: 0 done, 1 the drawing
// could not be read (the system's message is on standard error).
// `options` carry the entity budget of the modern profile.
int RunStats(const std::string& file, bool json, ReadingProfile profile, const LoadOptions& options = {});
int RunDump(const std::string& file, ReadingProfile profile, const LoadOptions& options = {});

}  // namespace dxfimport
