#pragma once

#include <array>
#include <map>
#include <unordered_map>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dxf/drawing.h"
#include "dxf/line_source.h"
#include "dxf/rotation.h"
#include "dxf/text_decoder.h"

namespace dxfimport {

// What the reader shows while it loads. The viewer turns it into its progress bar and
// lets pending window messages run in SetValue.
class LoadProgress {
 public:
  virtual ~LoadProgress() = default;
  virtual void Show() {}
  virtual void Hide() {}
  virtual void SetValue(int percent) = 0;
};

// How the last load ended, for the command line and the logs.
struct LoadOutcome {
  bool Recognised = false;   // the file was taken as DXF
  bool Complete = false;     // every line was read; false when a reader stopped the load
  std::string StoppedIn;     // the reader that stopped it
  std::size_t StopLine = 0;  // line of the file where reading stopped
};

// How a file is read.
//  Legacy: every line is compared with the entity keywords, as the reader always did,
//    quirks included; a group code above 80 ends the load.
//  Modern: a structural reader of (group code, value) pairs for the files of today's CAD
//    tools: code pages and UTF-8, LWPOLYLINE, MTEXT, ELLIPSE, SPLINE, LEADER, HATCH,
//    true colour, colours by layer and by block, line-type patterns, paper space.
enum class ReadingProfile { Legacy, Modern };

// Reads an ASCII DXF file into a Drawing in one pass. Readers pull their group-code/value
// pairs into GroupValues and store the entity; block definitions are kept in the drawing
// and every INSERT adds transformed copies of their entities to the tables.
class DXFReader {
 public:
  // The longest value that a text is decoded from.
  static constexpr std::size_t kMaxTextBytes = 1u << 20;

  explicit DXFReader(Drawing& drawing, ReadingProfile profile = ReadingProfile::Modern)
      : drawing_(drawing), profile_(profile) {}

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
  using ReaderFn = bool (DXFReader::*)();
  struct Keyword;
  static const Keyword* FindKeyword(std::string_view line);
  struct ModernKind;
  static const ModernKind* FindModernKind(std::string_view name);

  bool Run(const char* procedure, ReaderFn body);
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
  };
  void StartPacer(LoadProgress* progress);
  void Pace(std::size_t lineStart);
  Pacer pacer_;
  LoadProgress* progress_ = nullptr;

  // Value accessors: the leading number of a group's text, converted with the run
  // time's rules (Overflow when it does not fit).
  double Num(int code) const;
  float Sng(int code) const;
  int16_t Int16(int code) const;
  int32_t Long(int code) const;
  std::string Text(int code) const;  // decoded to UTF-8

  // The entity's layer row, colour and pen style, by the profile's rules.
  int32_t EntityLayer();
  int32_t EntityColorValue() const;
  int32_t EntityLineType();
  // Pen style of a line-type name: the legacy map's, else (modern) the LTYPE table's
  // pattern scaled by $LTSCALE and `scale`, else solid.
  int32_t LineTypeOfName(std::string_view name, double scale = 1) const;

  // Header and tables.
  bool ReadHeaderPoint(float& x, float& y);
  bool DXFMinExtents();
  bool DXFMaxExtents();
  bool DXFLayers();
  bool FirstLayer();
  bool StoreLayer();

  // Entities: DXFx reads the entity's pairs, Storex stores them (shared by both
  // profiles).
  bool DXFLine();
  bool DXFCircle();
  bool DXFSolid();
  bool DXF3DFace();
  bool DXFText();
  bool DXFAttrib();
  bool DXFPoint();
  bool DXFPoly();
  bool StoreLine();
  bool StoreCircle();
  bool StoreSolid();
  bool Store3DFace();
  bool StoreText();
  bool StoreAttrib();
  TextEntity ReadTextFields();

  // Polylines of both kinds.
  struct OpenPolyline {
    PolySegment segment;  // layer, colour and width of every segment
    int32_t flags = 0;
    PointF first, previous;
    float bulge = 0;
    int vertices = 0;
  };
  void BeginPolyline(int32_t flags, float width);
  void AddVertex(float x, float y, float bulge, int32_t vertexFlags);
  void EndPolyline();
  void AddPolySegment(PolySegment seg);
  OpenPolyline polyline_;

  // Blocks, inserts and dimensions.
  bool DXFBlock();
  bool StoreBlock();
  bool EndBlock();
  bool DXFInsertFromFile();
  bool StoreInsert();
  bool ResolvePendingInserts();
  bool DXFInsert(int32_t index);
  bool DXFDimension();
  bool StoreDimension();

  struct InsertTransform {
    double X = 0, Y = 0;
    float Rotation = 0;
    double ScaleX = 1, ScaleY = 1;
    int32_t Layer = 0;
    int32_t Color = 0;  // replaces colour "by block" (modern profile)
  };
  enum class ReplayKinds { All, LinesAndTexts };
  void Replay(int32_t block, const InsertTransform& t, ReplayKinds kinds = ReplayKinds::All);
  bool InsertAllowed(int32_t block);
  // Sends a record read from the file to the tables, or (inside a definition) to the
  // block, relative to its base point.
  void Store(BlockRecord record);
  // Sends a finished record to the open block while InBlock, else to the tables.
  void Emit(BlockRecord record);
  void ExtendBy(const BlockRecord& record);

  // Subtracts the current block's base point; used for entities inside a definition.
  double RelX(double x) const;
  double RelY(double y) const;

  // The modern profile (modern_reader.cpp).
  bool ReadModern();
  bool NextPair(int& code, std::string_view& value);
  bool ReadRecord(bool header);
  bool DispatchModern(std::string_view name);
  void ReadHeaderVariable(std::string_view name);
  bool ModernLayer();
  bool ModernLineType();
  bool ModernTableEntry();
  bool ModernSection();
  bool ModernPolyline();
  bool ModernVertex();
  bool ModernSeqEnd();
  bool ModernLwPolyline();
  bool ModernInsert();
  bool ModernMText();
  bool ModernEllipse();
  bool ModernSpline();
  bool ModernLeader();
  bool ModernHatch();
  void EmitCurve(const std::vector<PointF>& points);
  // Chord tolerance for curves: a quarter pixel when the extents (from the header, else
  // the curve itself) fill 2048 pixels.
  double CurveTolerance(double curveSize) const;
  void FinishModernExtents();
  std::string_view Last(int code) const;  // the last value of a code in the record
  bool Has(int code) const;

  Drawing& drawing_;
  ReadingProfile profile_;
  LineSource source_;
  LoadOutcome outcome_;
  std::array<uint8_t, 81> setCodes_{};
  std::size_t setCount_ = 0;
  bool firstLayer_ = true;
  int32_t currentBlock_ = 0;        // the last BLOCK read
  int32_t outputBlock_ = 0;         // where entities go while InBlock
  int32_t currentInsertLayer_ = 0;  // layer of the last INSERT, for its attributes
  int32_t pendingResolved_ = 0;

  // Modern state: the pairs of the current record, a pair read ahead, the section and
  // table being read, and what the header said.
  std::vector<std::pair<int, std::string_view>> pairs_;
  bool havePending_ = false;
  int pendingCode_ = 0;
  std::string_view pendingValue_;
  std::string section_;
  bool inPolyline_ = false;
  bool skipBlock_ = false;  // a paper-space block: its entities are not kept
  bool headerExtMin_ = false, headerExtMax_ = false;
  double ltScale_ = 1;
  std::unordered_map<std::string, std::vector<float>> lineTypes_;        // LTYPE elements
  mutable std::map<std::pair<std::string, double>, int32_t> patternStyles_;  // (name, scale) -> style
  TextDecoder decoder_;
};

// Turns an angle into the range below 360 by repeated subtraction in single precision;
// negative angles are left as they are. An angle beyond 368,640 degrees is first reduced
// in one step, so that a corrupt value cannot stall the load.
float UnWindAngle(float& angle);

}  // namespace dxfimport
