#pragma once

#include <memory>

namespace dxfimport {

class frmImport;

// The main window with the layer dialog wired to its Options menu.
std::unique_ptr<frmImport> MakeViewer(bool startedForAutomation);

}  // namespace dxfimport
