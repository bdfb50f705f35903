#include "viewer/busy_work.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QProgressBar>
#include <QPushButton>

namespace dxfimport {

void ProgressBarSink::Show() {
  bar_->setValue(0);
  bar_->show();
  bar_->raise();
  cancel_->show();
  cancel_->raise();
}

void ProgressBarSink::Hide() {
  bar_->hide();
  cancel_->hide();
}

void ProgressBarSink::SetValue(int percent) {
  bar_->setValue(percent);
  QCoreApplication::processEvents();
}

void ProgressBarSink::Poll() { QCoreApplication::processEvents(); }

BusyInputGate::BusyInputGate(std::function<bool()> busy, std::function<void()> stop, QPushButton* cancel,
                             QObject* parent)
    : QObject(parent), busy_(std::move(busy)), stop_(std::move(stop)), cancel_(cancel) {}

bool BusyInputGate::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Drop:
    case QEvent::ContextMenu:
      break;
    default:
      return false;
  }
  if (!busy_()) return false;
  if (watched == cancel_) return false;
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) stop_();
  return true;
}

}  // namespace dxfimport
