#pragma once

#include <string>

#include "dxf/model/drawing.h"
#include "dxf/reader.h"

namespace dxfimport {

// Loads a file for a command into a reset drawing. False when nothing could be read (the
// system's message is on standard error). A load that a reader stopped keeps what was
// read and says on standard error at which line it stopped (`outcome.Complete` false);
// what the load left out (an insert over the entity budget) is named there too.
bool LoadForCommand(const std::string& file, Drawing& drawing, LoadOutcome& outcome,
                    ReadingProfile profile = ReadingProfile::Modern, const LoadOptions& options = {});

// The line that says which paper-space layout is drawn, or "" when model space is.
std::string LayoutNotice(const LoadOutcome& outcome);

}  // namespace dxfimport
