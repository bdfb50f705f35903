#include "app/viewer_factory.h"

#include "layers/layer_dialog.h"
#include "viewer/main_window.h"

namespace dxfimport {

std::unique_ptr<frmImport> MakeViewer(bool startedForAutomation) {
  auto window = std::make_unique<frmImport>(startedForAutomation);
  frmImport* w = window.get();
  w->OpenLayerDialog = [w] {
    frmLayer::Open(
        w, w->drawing(), w->zoom(), [w] { w->RedrawPicture(); }, w->ChooseColor);
  };
  return window;
}

}  // namespace dxfimport
