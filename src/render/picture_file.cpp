#include "render/picture_file.h"

#include <QSaveFile>

namespace dxfimport {

bool SavePictureAtomically(const QImage& image, const QString& path, const char* format) {
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return false;
  QByteArray suffix = path.section('.', -1).toLower().toLatin1();
  if (!image.save(&file, format ? format : suffix.constData())) {
    file.cancelWriting();
    return false;
  }
  return file.commit();
}

}  // namespace dxfimport
