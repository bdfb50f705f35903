// Writes the files the package installs beside the program from their one source each:
// the manual page and the bash completion from the program's own command line (so that
// neither can drift from --help), and the hicolor icons from the scalable icon.
//   dxfimport_docgen PROSE.1.in OUT.1 OUT-COMPLETION ICON.svg ICON-DIR
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <fstream>
#include <iostream>
#include <sstream>

#include "app/command_line.h"
#include "app/manual.h"

namespace {

bool WriteText(const char* path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  return bool(out);
}

// ICON-DIR/N.png for each size of the hicolor theme the package fills.
bool WriteIcons(const QString& svg, const QString& directory) {
  QSvgRenderer renderer(svg);
  if (!renderer.isValid() || !QDir().mkpath(directory)) return false;
  for (int size : {16, 24, 32, 48, 64, 128, 256}) {
    QImage icon(size, size, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    painter.end();
    if (!icon.save(directory + "/" + QString::number(size) + ".png")) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::cerr << "usage: dxfimport_docgen PROSE.1.in OUT.1 OUT-COMPLETION ICON.svg ICON-DIR\n";
    return 2;
  }
  QGuiApplication app(argc, argv);
  std::ifstream in(argv[1]);
  std::stringstream prose;
  prose << in.rdbuf();
  const dxfimport::CommandLine commandLine;
  const bool written =
      in &&
      WriteText(argv[2], dxfimport::ManualPage(commandLine.app, prose.str(), dxfimport::ProgramVersion())) &&
      WriteText(argv[3], dxfimport::BashCompletion(commandLine.app)) && WriteIcons(argv[4], argv[5]);
  if (!written) std::cerr << "dxfimport_docgen: could not write the packaging files\n";
  return written ? 0 : 1;
}
