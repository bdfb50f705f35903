#include "viewer/dialog_font.h"

#include <QFontDatabase>
#include <QWidget>

#include "support/texts.h"

namespace dxfimport {

QString ApplyDialogFont(QWidget* window, bool apply) {
  const QString face = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family().left(80);
  if (!apply || !window) return face;
  bool ok = false;
  int size = QString::fromStdString(LoadResText(10, "8")).toInt(&ok);
  if (!ok || size <= 0) size = 8;
  for (QWidget* control : window->findChildren<QWidget*>()) {
    if (control->objectName() == "lblLocked") continue;
    QFont font = control->font();
    font.setFamily(face);
    font.setPointSize(size);
    control->setFont(font);
  }
  return face;
}

}  // namespace dxfimport
