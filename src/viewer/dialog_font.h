#pragma once

#include <QString>

class QWidget;

namespace dxfimport {

// The system's default dialog font. With `apply`, every control of the window except one
// named "lblLocked" takes that face at the size of the string table (text 10, "8" when
// missing). Returns the face name.
QString ApplyDialogFont(QWidget* window, bool apply);

}  // namespace dxfimport
