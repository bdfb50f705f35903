#pragma once

#include <QObject>
#include <functional>

#include "dxf/reader.h"

class QProgressBar;
class QPushButton;

namespace dxfimport {

// The load's progress on the progress bar, with the Cancel button beside it; pending
// window messages run at each step and every few milliseconds between them, and a stop
// asked for by the user ends the load.
class ProgressBarSink : public LoadProgress {
 public:
  ProgressBarSink(QProgressBar* bar, QPushButton* cancel, const bool& stopRequested)
      : bar_(bar), cancel_(cancel), stopRequested_(stopRequested) {}
  void Show() override;
  void Hide() override;
  void SetValue(int percent) override;
  void Poll() override;
  bool Cancelled() const override { return stopRequested_; }

 private:
  QProgressBar* bar_;
  QPushButton* cancel_;
  const bool& stopRequested_;
};

// While long work runs (`busy` true) and lets window messages run, user input waits:
// button presses and keys are held back from every window except the Cancel button, and
// Esc asks the work to stop. A button release always passes (it ends what its press
// began, a drag), and so do the wheel and mouse moves: the window merges the views they
// ask for into the one drawn next. Installed on the application by the window that owns it (its
// parent), and gone with that window.
class BusyInputGate : public QObject {
 public:
  BusyInputGate(std::function<bool()> busy, std::function<void()> stop, QPushButton* cancel, QObject* parent);
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::function<bool()> busy_;
  std::function<void()> stop_;
  QPushButton* cancel_;
};

}  // namespace dxfimport
