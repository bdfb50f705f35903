#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "dxf/input/load_context.h"
#include "dxf/model/drawing.h"
#include "dxf/model/rotation.h"

namespace dxfimport {

// The legacy profile's reader. Every line of the file is compared with the entity
// keywords; the reader of a keyword pulls the entity's group-code/value pairs into
// GroupValues and stores it. Block definitions are kept in the drawing and every INSERT
// adds transformed copies of their entities to the tables.
class LegacyReader : public ProfileReader {
 public:
  explicit LegacyReader(LoadContext& context) : ctx_(context), drawing_(context.drawing) {}
  bool Read() override;

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
  using ReaderFn = bool (LegacyReader::*)();
  struct Keyword;
  static const Keyword* FindKeyword(std::string_view line);

  bool Run(const char* procedure, ReaderFn body) {
    return ctx_.Run(procedure, [this, body] { return (this->*body)(); });
  }
  bool ReadAll();

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

  LoadContext& ctx_;
  Drawing& drawing_;
  std::array<uint8_t, 81> setCodes_{};
  std::size_t setCount_ = 0;
  bool firstLayer_ = true;
  int32_t currentBlock_ = 0;        // the last BLOCK read
  int32_t outputBlock_ = 0;         // where entities go while InBlock
  int32_t currentInsertLayer_ = 0;  // layer of the last INSERT, for its attributes
  int32_t pendingResolved_ = 0;
};

std::unique_ptr<ProfileReader> MakeLegacyReader(LoadContext& context);

// Turns an angle into the range below 360 by repeated subtraction in single precision;
// negative angles are left as they are. An angle beyond 368,640 degrees is first reduced
// in one step, so that a corrupt value cannot stall the load.
float UnWindAngle(float& angle);

}  // namespace dxfimport
