#include "app/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace dxfimport {

ChildProcess::ChildProcess(const std::function<int(int out, int in)>& work, unsigned seconds,
                           bool captureErrors) {
  int out[2], in[2];
  if (pipe(out) != 0) return;
  if (pipe(in) != 0) {
    close(out[0]), close(out[1]);
    return;
  }
  pid_ = fork();
  if (pid_ == 0) {
    // Only its own pipes: a child holding a sibling's input would keep that sibling
    // waiting for an end that never comes.
    for (int fd = 3; fd < 4096; ++fd)
      if (fd != out[1] && fd != in[0]) close(fd);
    if (captureErrors) dup2(out[1], STDERR_FILENO);
    if (seconds > 0) alarm(seconds);
    _exit(work(out[1], in[0]));
  }
  close(out[1]), close(in[0]);
  if (pid_ < 0) {
    close(out[0]), close(in[1]);
    return;
  }
  fd_ = out[0];
  input_ = in[1];
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      fd_(std::exchange(other.fd_, -1)),
      input_(std::exchange(other.input_, -1)),
      output_(std::move(other.output_)),
      exitCode_(other.exitCode_),
      signal_(other.signal_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
  std::swap(pid_, other.pid_);
  std::swap(fd_, other.fd_);
  std::swap(input_, other.input_);
  std::swap(output_, other.output_);
  std::swap(exitCode_, other.exitCode_);
  std::swap(signal_, other.signal_);
  return *this;
}

ChildProcess::~ChildProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    Finish();
  }
}

bool ChildProcess::ReadSome() {
  char buffer[4096];
  const ssize_t n = fd_ >= 0 ? read(fd_, buffer, sizeof buffer) : 0;
  if (n > 0) output_.append(buffer, std::size_t(n));
  return n > 0;
}

bool ChildProcess::Send(const void* data, std::size_t size) {
  return input_ >= 0 && write(input_, data, size) == ssize_t(size);
}

void ChildProcess::CloseInput() {
  if (input_ >= 0) close(input_), input_ = -1;
}

void ChildProcess::Finish() {
  CloseInput();
  while (ReadSome()) {
  }
  if (fd_ >= 0) close(fd_), fd_ = -1;
  if (pid_ <= 0) return;
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  if (WIFSIGNALED(status))
    signal_ = WTERMSIG(status);
  else
    exitCode_ = WEXITSTATUS(status);
}

void ChildProcess::Kill() {
  if (pid_ > 0) kill(pid_, SIGKILL);
  Finish();
}

bool ChildProcess::TimedOut() const { return signal_ == SIGALRM; }

}  // namespace dxfimport
