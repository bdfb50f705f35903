#include "support/temp_file.h"

#include <unistd.h>

#include <QDir>
#include <cstdlib>

#include "support/log.h"
#include "support/runtime_error.h"

namespace dxfimport {

std::string NewTempFileName() {
  std::string name = QDir::tempPath().toStdString() + "/~CVXXXXXX.tmp";
  int fd = mkstemps(name.data(), 4);
  if (fd < 0) throw RunTimeError(kErrPathFileAccess);
  ::close(fd);
  LogDebug("temp file name is <" + name + ">");
  return name;
}

}  // namespace dxfimport
