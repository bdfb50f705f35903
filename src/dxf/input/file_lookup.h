#pragma once

#include <string>
#include <vector>

namespace dxfimport {

// Finds a file that a drawing names (an image, an external reference): as written (a
// Windows path read with '/' for '\'), relative to the drawing's folder, then by its bare
// name in the drawing's folder and in each of `folders`, in that order. The path found,
// or "" when there is none. `drawingFile` may be "" (a drawing read from memory).
std::string FindReferencedFile(const std::string& name, const std::string& drawingFile,
                               const std::vector<std::string>& folders);

}  // namespace dxfimport
