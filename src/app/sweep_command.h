#pragma once

#include <string>

namespace dxfimport {

// Loads and draws every .dxf file under `dir` in both reading profiles, each in a child
// process bounded to `secondsPerFile`, and writes a Markdown table: file, bytes, and for
// each profile the load time, the entities, whether the load ended through the error
// routine (with its message), and the redraw time. A crash or a timeout is a row of its
// own. Returns 0 when every file finished without a crash or a timeout, else 1.
int RunSweep(const std::string& dir, const std::string& output, int secondsPerFile);

}  // namespace dxfimport
