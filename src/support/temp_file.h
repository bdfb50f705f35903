#pragma once

#include <string>

namespace dxfimport {

// A fresh, empty, kept file named ~CV*.tmp in the temporary directory; its path. Raises
// the run time's path/file access error when no file can be made.
std::string NewTempFileName();

}  // namespace dxfimport
