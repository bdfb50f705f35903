#pragma once

#include "support/messages.h"

namespace dxfimport {

// Messages as modal message boxes: the information or critical icon, an OK button and the
// application title as caption.
class MessageBoxSink : public MessageSink {
 public:
  void Show(MessageIcon icon, const std::string& caption, const std::string& text) override;
};

}  // namespace dxfimport
