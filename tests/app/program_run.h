#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "testing/dxf_fixture.h"

namespace dxfimport {

struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs the dxfimport program with `args`, capturing both output streams.
inline ProgramRun Dxfimport(const std::string& args, const std::string& env = "LANG=C.UTF-8") {
  testing::TempFile errFile("", ".err");
  std::string command = env + " " + DXFIMPORT_BIN + " " + args + " 2>" + errFile.path();
  ProgramRun run;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 4096> buffer;
  while (std::size_t n = fread(buffer.data(), 1, buffer.size(), pipe)) run.out.append(buffer.data(), n);
  int raw = pclose(pipe);
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  FILE* err = fopen(errFile.path().c_str(), "r");
  while (std::size_t n = fread(buffer.data(), 1, buffer.size(), err)) run.err.append(buffer.data(), n);
  fclose(err);
  return run;
}

}  // namespace dxfimport
