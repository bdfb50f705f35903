#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/drawing.h"
#include "dxf/line_source.h"
#include "dxf/load_report.h"
#include "dxf/profile.h"
#include "dxf/rotation.h"
#include "dxf/text_decoder.h"
#include "support/runtime_error.h"

namespace dxfimport {

class ModernReader;

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
  LoadReport Report;                 // what the modern profile skipped, repaired or left out
};

// What the caller asks of a modern load.
struct LoadOptions {
  std::string Layout;  // a paper-space layout to draw instead of model space ("" none)
  // Rows the drawing may hold; an insert that would take it past them is left out whole
  // (0: DefaultEntityBudget()).
  int64_t EntityBudget = 0;
};

// Reads a DXF file into a Drawing in one pass. The legacy profile's readers pull their
// group-code/value pairs into GroupValues and store the entity; block definitions are
// kept in the drawing and every INSERT adds transformed copies of their entities to the
// tables. The modern profile is read by ModernReader.
class DXFReader {
 public:
  // The longest value that a text is decoded from.
  static constexpr std::size_t kMaxTextBytes = 1u << 20;

  explicit DXFReader(Drawing& drawing, ReadingProfile profile = ReadingProfile::Modern)
      : drawing_(drawing), profile_(profile) {}
  ~DXFReader();

  void SetOptions(LoadOptions options) { options_ = std::move(options); }

  // Loads a file into the drawing (which the caller has reset with InitDrawing). False
  // when the file is not DXF (message 1050) or cannot be opened (reported); true when the
  // reading ran to its end or a reader stopped it (reported by that reader). What was
  // read before a stop is kept.
  bool LoadDXF(const std::string& fileName, LoadProgress* progress = nullptr);
  // The same over bytes in memory.
  bool LoadDXFBytes(std::string_view bytes, LoadProgress* progress = nullptr);

  const LoadOutcome& outcome() const { return outcome_; }
  ReadingProfile profile() const { return profile_; }

  // True when a line whose blank-trimmed text is exactly "SECTION" exists.
  static bool LocateSection(std::string_view bytes);
  // The same for a file; false when it cannot be read.
  static bool LocateSection(const std::string& fileName);

  // Reads the current entity's pairs into GroupValues until group code 0 or 9, whose
  // following line is left for the driver. Raises Subscript out of range for a code
  // outside 0..80, Type mismatch for a code line that is no number, Input past end of
  // file at the end.
  bool LoadEntity();

  // Group values of the entity being read, by group code (empty when absent).
  std::array<std::string_view, 81> GroupValues{};
  std::string_view CurrentLine;
  bool InBlock = false;
  bool NoExtentsUpdate = false;

 private:
  friend class ModernReader;
  using ReaderFn = bool (DXFReader::*)();
  struct Keyword;
  static const Keyword* FindKeyword(std::string_view line);

  // The error path every reader shares: the run time's error goes to the error routine
  // under the reader's name and the reader gives false, which ends the load.
  template <class Body>
  bool Run(const char* procedure, Body&& body);
  bool Run(const char* procedure, ReaderFn body) {
    return Run(procedure, [this, body] { return (this->*body)(); });
  }
  bool ReportFailure(const char* procedure, int number, const std::string& text);
  bool ReadAll(LoadProgress* progress);
  bool SectionInSource();
  bool ReadLegacy();
  void StopAt(const char* procedure);

  // Progress and page release while reading; call once per line read by a driver.
  struct Pacer {
    double length = 0;
    float nextStep = 5;
    std::size_t nextStepAt = 0;
    std::size_t nextRelease = 0;
    std::size_t nextPoll = 0;
  };
  void StartPacer(LoadProgress* progress);
  void Pace(std::size_t lineStart);
  // Lets the progress sink run its window messages; raises LoadCancelled when the user
  // asked to stop.
  void Poll();
  Pacer pacer_;
  LoadProgress* progress_ = nullptr;

  // Value accessors: the leading number of a group's text, converted with the run
  // time's rules (Overflow when it does not fit).
  double Num(int code) const;
  float Sng(int code) const;
  int16_t Int16(int code) const;
  int32_t Long(int code) const;
  std::string Text(int code) const;  // decoded

  // Header and tables.
  bool ReadHeaderPoint(double& x, double& y);
  bool DXFMinExtents();
  bool DXFMaxExtents();
  bool DXFLayers();
  bool FirstLayer();

  // Entities: DXFx reads the entity's pairs, Storex stores them.
  bool DXFLine();
  bool DXFCircle();
  bool DXFSolid();
  bool DXF3DFace();
  bool DXFText();
  bool DXFAttrib();
  bool DXFPoint();
  bool DXFPoly();
  TextEntity ReadTextFields();

  // Polylines.
  struct OpenPolyline {
    PolySegment segment;  // layer, colour and width of every segment
    int32_t flags = 0;
    PointF first, previous;
    float bulge = 0;
    int vertices = 0;
  };
  void AddVertex(float x, float y, float bulge, int32_t vertexFlags);
  void EndPolyline();
  void AddPolySegment(PolySegment seg);
  OpenPolyline polyline_;

  // Blocks, inserts and dimensions.
  bool DXFBlock();
  bool EndBlock();
  bool DXFInsertFromFile();
  bool ResolvePendingInserts();
  bool DXFInsert(int32_t index);
  bool DXFDimension();
  bool PendingInsertAllowed(int32_t block);

  struct InsertTransform {
    double X = 0, Y = 0;
    float Rotation = 0;
    double ScaleX = 1, ScaleY = 1;
    int32_t Layer = 0;
  };
  enum class ReplayKinds { All, LinesAndTexts };
  void Replay(int32_t block, const InsertTransform& t, ReplayKinds kinds = ReplayKinds::All);
  // Sends a record read from the file to the tables, or (inside a definition) to the
  // block, relative to its base point.
  template <class Row>
  void Store(Row record);
  // Sends a finished record to the open block while InBlock, else to the tables.
  template <class Row>
  void Emit(const Row& record);

  // Subtracts the current block's base point; used for entities inside a definition.
  double RelX(double x) const;
  double RelY(double y) const;

  Drawing& drawing_;
  ReadingProfile profile_;
  LoadOptions options_;
  LineSource source_;
  LoadOutcome outcome_;
  std::array<uint8_t, 81> setCodes_{};
  std::size_t setCount_ = 0;
  bool firstLayer_ = true;
  int32_t currentBlock_ = 0;        // the last BLOCK read
  int32_t outputBlock_ = 0;         // where entities go while InBlock
  int32_t currentInsertLayer_ = 0;  // layer of the last INSERT, for its attributes
  int32_t pendingResolved_ = 0;
  TextDecoder decoder_;
  std::string converted_;  // a binary file turned into text (modern profile)
};

template <class Body>
bool DXFReader::Run(const char* procedure, Body&& body) {
  try {
    return body();
  } catch (const RunTimeError& e) {
    return ReportFailure(procedure, e.number(), e.text());
  } catch (const std::bad_alloc&) {
    return ReportFailure(procedure, kErrOutOfMemory, RunTimeText(kErrOutOfMemory));
  }
}

// Turns an angle into the range below 360 by repeated subtraction in single precision;
// negative angles are left as they are. An angle beyond 368,640 degrees is first reduced
// in one step, so that a corrupt value cannot stall the load.
float UnWindAngle(float& angle);

}  // namespace dxfimport
