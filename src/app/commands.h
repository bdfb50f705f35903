#pragma once

#include <string>

namespace dxfimport {

// Command-line subcommands. Each returns the process exit status: 0 done, 1 the drawing
// could not be read (the system's message is on standard error).
int RunStats(const std::string& file, bool json);
int RunDump(const std::string& file);

}  // namespace dxfimport
