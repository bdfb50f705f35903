#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace dxfimport {

// Work done in a forked child process, so that a crash or a hang costs only that piece of
// work. What the child writes to the pipe (and, when asked, to its standard error) is
// read back by the parent.
class ChildProcess {
 public:
  // Forks; the child runs `work` with the descriptors of its output pipe and its input
  // pipe, bounded to `seconds` (0: no bound), and exits with the status `work` returns.
  // With `captureErrors` the child's standard error goes to the output pipe too.
  ChildProcess(const std::function<int(int out, int in)>& work, unsigned seconds, bool captureErrors = false);
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ChildProcess& operator=(ChildProcess&& other) noexcept;
  ~ChildProcess();

  bool Started() const { return pid_ > 0; }
  int Descriptor() const { return fd_; }
  // Writes to the child's input; false when it is gone.
  bool Send(const void* data, std::size_t size);
  // Closes the child's input: it reads its end.
  void CloseInput();
  // Reads what is there (the descriptor was found readable); false at the end of the output.
  bool ReadSome();
  // Reads to the end and waits for the child.
  void Finish();
  // Ends the child at once and waits for it.
  void Kill();

  const std::string& Output() const { return output_; }
  // Forgets the first `count` characters of the output read so far.
  void Consume(std::size_t count) { output_.erase(0, count); }
  int ExitCode() const { return exitCode_; }  // -1 when ended by a signal
  int Signal() const { return signal_; }      // 0 when it exited
  bool TimedOut() const;

 private:
  pid_t pid_ = -1;
  int fd_ = -1;
  int input_ = -1;
  std::string output_;
  int exitCode_ = -1;
  int signal_ = 0;
};

}  // namespace dxfimport
