#include "app/dxf_class.h"

#include <QApplication>
#include <QColor>
#include <QEventLoop>
#include <QPointer>
#include <cstdio>

#include "app/viewer_factory.h"
#include "support/temp_file.h"
#include "viewer/main_window.h"

namespace dxfimport {
namespace {

// The one main window under automation, made by the first ShowDialog.
QPointer<frmImport> g_window;

}  // namespace

DXF::DXF() = default;

DXF::~DXF() { Class_Terminate(); }

void DXF::strDXFFileName(const std::string& fileName) { dxfFileName_ = fileName; }

namespace {

// The look kept, changed as `change` says, kept again and given to an open window.
template <class Change>
void ChangeLook(Change change) {
  BackgroundLook look = frmImport::KeptBackgroundLook();
  change(look);
  if (g_window)
    g_window->SetBackgroundLook(look);
  else
    frmImport::KeepBackgroundLook(look);
}

}  // namespace

void DXF::intFade(int percent) {
  ChangeLook([percent](BackgroundLook& look) { look.Fade = percent; });
}

int DXF::intFade() const { return frmImport::KeptBackgroundLook().Fade; }

void DXF::strMonochrome(const std::string& color) {
  const QColor ink(QString::fromStdString(color));
  const int32_t bgr =
      !color.empty() && ink.isValid() ? ink.red() | (ink.green() << 8) | (ink.blue() << 16) : -1;
  ChangeLook([bgr](BackgroundLook& look) { look.Monochrome = bgr; });
}

void DXF::booTransparentBackground(bool transparent) {
  ChangeLook([transparent](BackgroundLook& look) { look.Transparent = transparent; });
}

bool DXF::booTransparentBackground() const { return frmImport::KeptBackgroundLook().Transparent; }

std::string DXF::strMonochrome() const {
  const int32_t bgr = frmImport::KeptBackgroundLook().Monochrome;
  return bgr < 0 ? std::string()
                 : QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF).name().toStdString();
}

frmImport* DXF::window() const { return g_window; }

void DXF::ShowDialog() {
  if (dxfFileName_.empty()) return;
  gstrDXFFileName = dxfFileName_;
  if (!g_window) {
    g_window = MakeViewer(true).release();
    g_window->SetReadingProfile(legacy_ ? ReadingProfile::Legacy : ReadingProfile::Modern);
    g_window->setAttribute(Qt::WA_DeleteOnClose, false);
    g_window->FileOpen(false);  // the window opens the host's file as it loads
  }
  g_window->hide();
  QEventLoop loop;
  g_window->onHidden = [&loop] { loop.quit(); };
  g_window->setWindowModality(Qt::ApplicationModal);
  g_window->show();
  loop.exec();
  if (g_window) g_window->onHidden = nullptr;
}

std::string DXF::strBmpFileName() {
  // A load the user stopped is not a drawing to hand back.
  if (g_window && !g_window->booImportCancel && g_window->booPictureLoaded && !g_window->loadStopped()) {
    bmpFileName_ = NewTempFileName();
    const Georeference geo = g_window->CurrentGeoreference();
    placement_ =
        (geo.Known() ? g_window->CurrentPlacement().Through(geo.ToSystem) : g_window->CurrentPlacement())
            .WorldFileText();
    crs_ = geo.System.Wkt;
    // The temporary name is no bitmap's: the picture is written as NAME.bmp, then renamed.
    const std::string bitmap = bmpFileName_ + ".bmp";
    if (!g_window->WriteCurrentPicture(bitmap) || std::rename(bitmap.c_str(), bmpFileName_.c_str()) != 0) {
      std::remove(bitmap.c_str());
      std::remove(bmpFileName_.c_str());
      bmpFileName_.clear();
    }
  } else {
    bmpFileName_.clear();
  }
  if (bmpFileName_.empty()) placement_.clear(), crs_.clear();
  return bmpFileName_;
}

void DXF::Class_Terminate() {
  for (QWidget* window : QApplication::topLevelWidgets()) window->close();
  delete g_window.data();
}

}  // namespace dxfimport
