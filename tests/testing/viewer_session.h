#pragma once

#include <QTemporaryDir>

#include "support/messages.h"
#include "support/texts.h"
#include "testing/user_folders.h"

namespace dxfimport::testing {

// What a suite of viewer tests shares: the viewer's settings in a folder of its own, new
// for the suite, state and log in the process's own folders, and the messages recorded
// instead of shown. Begin in initTestCase, End in cleanupTestCase.
class ViewerSession {
 public:
  void Begin() {
    UseOwnUserFolders();
    qputenv("XDG_CONFIG_HOME", config_.path().toUtf8());
    SetApplicationTitle("Corvath DXF Import");
    previous_ = SetMessageSink(&messages);
  }
  void End() { SetMessageSink(previous_); }

  RecordingMessageSink messages;

 private:
  MessageSink* previous_ = nullptr;
  QTemporaryDir config_;
};

}  // namespace dxfimport::testing
