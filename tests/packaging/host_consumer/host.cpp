// Shows nothing: with no file named, ShowDialog returns at once and there is no bitmap.
#include <dxfimport/dxf_class.h>

#include <QApplication>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  dxfimport::DXF dxf;
  dxf.ShowDialog();
  return dxf.strBmpFileName().empty() ? 0 : 1;
}
