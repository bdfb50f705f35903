#include "support/shared_settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <cstdlib>

#include "support/log.h"

namespace dxfimport {
namespace {

std::string g_bitmapDirectory;
std::string g_helpDirectory;

constexpr const char* kOrganization = "Corvath";

std::string Read(QSettings& settings, const char* key, const std::string& fallback) {
  QString value = settings.value(QString("Paths/") + key).toString();
  return value.isEmpty() ? fallback : value.toStdString();
}

}  // namespace

const std::string& BitmapDirectory() { return g_bitmapDirectory; }
const std::string& HelpDirectory() { return g_helpDirectory; }

std::string WithTrailingSeparator(std::string directory) {
  if (directory.empty() || (directory.back() != '/' && directory.back() != '\\')) directory += '/';
  return directory;
}

std::string InstallationDirectory() {
  if (const char* home = std::getenv("DXFIMPORT_HOME"); home && *home) return WithTrailingSeparator(home);
  // Installed as a package the program sits in <prefix>/bin and its files in
  // <prefix>/share/dxfimport; run from a build or an unpacked folder, beside the program.
  const QDir program(QCoreApplication::applicationDirPath());
  if (program.dirName() == "bin") {
    const QString shared = program.absoluteFilePath("../share/dxfimport");
    if (QFileInfo(shared).isDir()) return WithTrailingSeparator(QDir::cleanPath(shared).toStdString());
  }
  return WithTrailingSeparator(program.absolutePath().toStdString());
}

void RestoreSharedSettings(bool flag) {
  LogDebug("before cv_restoresettings");
  LogDebug("iniStuff.cv_RestoreSettings... enter");
  const std::string install = InstallationDirectory();
  QSettings conversion(QSettings::NativeFormat, QSettings::UserScope, kOrganization,
                       "Corvath Advanced Professional Design");
  const bool converted = conversion.value("Initialization/Conversion Complete", false).toBool();
  std::string bitmaps, help;
  if (!flag && converted) {
    LogDebug("getting settings from the registry");
    QSettings registry(QSettings::NativeFormat, QSettings::UserScope, kOrganization,
                       "Corvath Professional Design");
    bitmaps = Read(registry, "Bitmap Directory", install + "BACKGRND");
    help = Read(registry, "Application Helpfile", install);
  } else {
    QSettings ini(QString::fromStdString(install + "CVDESIGN.INI"), QSettings::IniFormat);
    bitmaps = Read(ini, "Bitmap Directory", install + "BACKGRND");
    help = Read(ini, "Application Helpfile", install);
  }
  g_bitmapDirectory = WithTrailingSeparator(bitmaps);
  g_helpDirectory = WithTrailingSeparator(help);
}

}  // namespace dxfimport
