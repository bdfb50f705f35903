#include "dxf/input/load_context.h"

#include <algorithm>

#include "support/messages.h"

namespace dxfimport {

const char* const kReaderModule = "Dxfin275";
constexpr std::size_t kReleaseStep = 8u << 20;  // hand back mapped pages every 8 MiB
constexpr std::size_t kPollStep = 1u << 20;     // let window messages run every MiB read

LoadContext::LoadContext(Drawing& drawing, LineSource& source, const LoadOptions& options,
                         LoadOutcome& outcome, LoadProgress* progress)
    : drawing(drawing), source(source), options(options), outcome(outcome), progress_(progress) {
  length_ = double(source.Length());
  nextStepAt_ = std::size_t(nextStep_ / 100.0 * length_) + 1;
  nextRelease_ = kReleaseStep;
  nextPoll_ = kPollStep;
}

void LoadContext::Poll() {
  if (!progress_) return;
  progress_->Poll();
  if (progress_->Cancelled()) throw LoadCancelled{};
}

// The progress bar moves when the position passes the next 5 % step (one step per line);
// the mapped pages behind the reading position are handed back every few megabytes.
void LoadContext::Pace(std::size_t lineStart) {
  std::size_t position = source.Position();
  if (position >= nextStepAt_) {
    float percent = std::min(100.0f, float(double(position) / length_ * 100.0));
    if (percent > nextStep_) {
      if (progress_) progress_->SetValue(int(percent));
      nextStep_ += 5;
      // A row takes at least a dozen bytes of the file.
      drawing.Anticipate(double(position) / length_, std::size_t(length_ - double(position)) / 12);
    }
    nextStepAt_ = percent > nextStep_ ? position : std::size_t(double(nextStep_) / 100.0 * length_) + 1;
  }
  if (lineStart >= nextRelease_) {
    source.ReleaseBefore(lineStart);
    nextRelease_ = lineStart + kReleaseStep;
  }
  if (position >= nextPoll_) {
    nextPoll_ = position + kPollStep;
    Poll();
  }
}

void LoadContext::StopAt(const char* procedure) {
  outcome.StoppedIn = procedure;
  outcome.StopLine = source.LineNumberAt(source.Position() ? source.Position() - 1 : 0);
}

bool LoadContext::ReportFailure(const char* procedure, int number, const std::string& text) {
  ReportError(procedure, kReaderModule, text, number);
  return false;
}

}  // namespace dxfimport
