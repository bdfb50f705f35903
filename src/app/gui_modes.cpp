#include "app/gui_modes.h"

#include <QApplication>
#include <algorithm>
#include <cstdio>

#include "app/dxf_class.h"
#include "app/viewer_factory.h"
#include "support/messages.h"
#include "support/shared_settings.h"
#include "viewer/main_window.h"
#include "viewer/message_box_sink.h"

namespace dxfimport {

int RunViewer(int argc, char** argv, const std::string& file) {
  QApplication app(argc, argv);
  MessageBoxSink boxes;
  ScopedMessageSink sink(&boxes);
  RestoreSharedSettings(false);
  std::unique_ptr<frmImport> window = MakeViewer(false);
  window->show();
  if (!file.empty()) {
    gstrDXFFileName = file;
    window->FileOpen(false);
  }
  return app.exec();
}

int RunAutomation(int argc, char** argv, const std::string& file, bool placement) {
  QApplication app(argc, argv);
  MessageBoxSink boxes;
  ScopedMessageSink sink(&boxes);
  DXF dxf;
  dxf.strDXFFileName(file);
  dxf.ShowDialog();
  std::string bitmap = dxf.strBmpFileName();
  std::printf("%s\n", bitmap.c_str());
  if (placement) {
    std::string numbers = dxf.strPlacement();
    std::replace(numbers.begin(), numbers.end(), '\n', ' ');
    while (!numbers.empty() && numbers.back() == ' ') numbers.pop_back();
    std::printf("%s\n%s\n", numbers.c_str(), dxf.strCRS().c_str());
  }
  std::fflush(stdout);
  dxf.Class_Terminate();
  return 0;
}

}  // namespace dxfimport
