#pragma once

#include <QImage>
#include <QString>

namespace dxfimport {

// Writes an image file (format from the extension: .bmp, .png, ...) under a temporary
// name and renames it into place, so a failure never leaves a half-written file. False
// when it could not be written.
bool SavePictureAtomically(const QImage& image, const QString& path, const char* format = nullptr);

}  // namespace dxfimport
