#pragma once

#include <string>

namespace dxfimport {

// The viewer started by a user: the shared settings restored, the window shown, FILE
// opened when one is named. Returns the program's exit status.
int RunViewer(int argc, char** argv, const std::string& file);

// The viewer run for a host in another process: FILE opened in the modal viewer; when the
// user leaves it, the path of a fresh temporary bitmap (or an empty line) on standard
// output.
// With `placement`, a second line holds the bitmap's placement: the six numbers of its
// world file, separated by blanks (empty with an empty first line).
int RunAutomation(int argc, char** argv, const std::string& file, bool placement = false);

}  // namespace dxfimport
