#include "viewer/message_box_sink.h"

#include <QApplication>
#include <QMessageBox>

namespace dxfimport {

void MessageBoxSink::Show(MessageIcon icon, const std::string& caption, const std::string& text) {
  QMessageBox box(icon == MessageIcon::Critical ? QMessageBox::Critical : QMessageBox::Information,
                  QString::fromStdString(caption), QString::fromStdString(text), QMessageBox::Ok,
                  QApplication::activeWindow());
  box.exec();
}

}  // namespace dxfimport
