#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "dxf/input/line_source.h"
#include "dxf/input/text_decoder.h"
#include "dxf/model/drawing.h"
#include "dxf/model/load_report.h"
#include "support/runtime_error.h"

namespace dxfimport {

// Thrown through the readers when the user stops a load.
struct LoadCancelled {};

// What the reader shows while it loads. The viewer turns it into its progress bar and
// lets pending window messages run in SetValue.
class LoadProgress {
 public:
  virtual ~LoadProgress() = default;
  virtual void Show() {}
  virtual void Hide() {}
  virtual void SetValue(int percent) = 0;
  // Called every few milliseconds of work between the steps: lets pending window
  // messages run.
  virtual void Poll() {}
  // True once the user asked to stop: the load ends there and keeps what it has read.
  virtual bool Cancelled() const { return false; }
};

// How the last load ended, for the command line and the logs.
struct LoadOutcome {
  bool Recognised = false;           // the file was taken as DXF
  bool Complete = false;             // every line was read; false when a reader stopped the load
  std::string StoppedIn;             // the reader that stopped it
  std::size_t StopLine = 0;          // line of the file where reading stopped
  std::string Layout;                // the paper-space layout drawn instead of model space ("" none)
  bool ModelSpaceEmpty = false;      // ... because model space holds nothing
  std::vector<std::string> Layouts;  // the paper-space layouts of the drawing, by name
  bool Cancelled = false;            // the user stopped the load (what was read is kept)
  bool Reported = false;             // the reader keeps a load report (what it skipped or repaired)
  LoadReport Report;                 // ... here

  // The load report, or null when the reader keeps none.
  const LoadReport* ReportIfKept() const { return Reported ? &Report : nullptr; }
  // Whether the drawing's paper-space layouts can be chosen from.
  bool LayoutsToChoose() const { return Reported && !Layouts.empty(); }
};

// What the caller asks of a modern load.
struct LoadOptions {
  std::string Layout;  // a paper-space layout to draw instead of model space ("" none)
  // Rows the drawing may hold; an insert that would take it past them is left out whole
  // (0: DefaultEntityBudget()).
  int64_t EntityBudget = 0;
  // The file the drawing is read from ("" from memory): images are looked for beside it.
  std::string DrawingFile;
  // Folders where the images and underlays a drawing names are also looked for (by their bare names).
  std::vector<std::string> ImageFolders;
  // Folders where the drawings that external references name are also looked for.
  std::vector<std::string> XrefFolders;
  // The drawings being read, outermost first, when this one is an external reference of
  // the last (a reference to any of them is a cycle).
  std::vector<std::string> XrefChain;
};

// The module that the readers' errors are reported under.
extern const char* const kReaderModule;

// What one load hands to the reader of its profile: the file, the drawing it fills, what
// the caller asked, the decoder of its texts, the progress shown and the outcome written.
class LoadContext {
 public:
  // The longest value that a text is decoded from.
  static constexpr std::size_t kMaxTextBytes = 1u << 20;

  LoadContext(Drawing& drawing, LineSource& source, const LoadOptions& options, LoadOutcome& outcome,
              LoadProgress* progress);

  Drawing& drawing;
  LineSource& source;
  const LoadOptions& options;
  LoadOutcome& outcome;
  TextDecoder decoder;

  // Call once per line read: moves the progress bar every 5 %, hands back the mapped
  // pages behind the reading position and lets window messages run every megabyte.
  void Pace(std::size_t lineStart);
  // Lets the progress sink run its window messages; raises LoadCancelled when the user
  // asked to stop.
  void Poll();
  // Notes where the load stopped, and in which reader.
  void StopAt(const char* procedure);
  // The run time's error goes to the error routine under the reader's name; false.
  bool ReportFailure(const char* procedure, int number, const std::string& text);
  // Runs a reader's body, reporting a run-time error (or memory running out) as that
  // reader's failure.
  template <class Body>
  bool Run(const char* procedure, Body&& body);

 private:
  LoadProgress* progress_;
  double length_ = 0;
  float nextStep_ = 5;
  std::size_t nextStepAt_ = 0;
  std::size_t nextRelease_ = 0;
  std::size_t nextPoll_ = 0;
};

template <class Body>
bool LoadContext::Run(const char* procedure, Body&& body) {
  try {
    return body();
  } catch (const RunTimeError& e) {
    return ReportFailure(procedure, e.number(), e.text());
  } catch (const std::bad_alloc&) {
    return ReportFailure(procedure, kErrOutOfMemory, RunTimeText(kErrOutOfMemory));
  }
}

// Reads one drawing by the rules of one profile.
class ProfileReader {
 public:
  virtual ~ProfileReader() = default;
  // Reads the whole file into the context's drawing. False when a reader stopped the
  // load (reported; what was read is kept).
  virtual bool Read() = 0;
};

}  // namespace dxfimport
