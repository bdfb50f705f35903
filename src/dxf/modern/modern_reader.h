#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "dxf/input/load_context.h"
#include "dxf/input/proxy_graphics.h"
#include "dxf/input/underlay_file.h"
#include "dxf/model/dimension_drawing.h"
#include "dxf/model/drawing.h"
#include "dxf/model/geometry.h"

namespace dxfimport {

// Layer names of the modern profile are kept whole up to this many characters.
inline constexpr std::size_t kMaxNameChars = 255;

// The modern reading profile: a structural reader of (group code, value) pairs. Only the
// value after a group code 0 names an entity or a table entry; header variables follow a
// group code 9; comments, embedded objects and extended data are passed over. Every
// entity is stored in world coordinates (its object coordinate system applied) and in
// double precision. Block definitions keep their own rows and references to the blocks
// they insert; an INSERT in model space expands its block, nested inserts and all, with
// one composed transform.
class ModernReader : public ProfileReader {
 public:
  explicit ModernReader(LoadContext& context);
  // Reads the whole file. False when an error stopped it (reported; what was read is
  // kept).
  bool Read() override;

  // The properties every entity carries (groups 8, 62/420, 6, 370).
  struct Style {
    int32_t Layer = 1;
    int32_t Color = 0;
    int32_t LineType = 0;
    int16_t LineWeight = kWeightDefault;
    uint8_t Alpha = kOpaque;
  };

 private:
  using Handler = bool (ModernReader::*)();
  struct Kind;
  static const Kind* FindKind(std::string_view name);
  static const Kind* ProxyKind();

  // Pairs and the record being read.
  bool NextPair(int& code, std::string_view& value);
  void ReadRecord(bool header);
  bool Dispatch(std::string_view name);
  void ReadOne(const Kind& kind);
  bool Invisible(const Kind& kind);
  // A group code line that holds no 16-bit number: named in the report, and the reading
  // goes on at the next line that holds the code 0.
  int Resynchronise(std::string_view codeLine, std::string_view& value);
  std::string_view Value(int code) const;  // the last value of a code (below 1000)
  bool Has(int code) const { return Value(code).data() != nullptr; }
  double Num(int code, double fallback = 0) const;
  // A whole number held within [lo, hi] (anything outside, or no number, at the bound).
  int32_t Whole(int code, int32_t fallback, int32_t lo, int32_t hi) const;
  std::string Text(int code) const;
  PointD Point(int xCode) const { return {Num(xCode), Num(xCode + 10)}; }
  Vec3 Extrusion() const { return {Num(210), Num(220), Num(230, 1)}; }
  // The map from the entity's object coordinates (at `elevation`) to where it is stored:
  // world coordinates, or the open block's coordinates.
  Affine Placement(double elevation = 0) const;
  Affine PlacementOf(Vec3 extrusion, double elevation) const;

  // Header (sections.cpp), table entries (tables.cpp), the LAYOUT object (objects.cpp).
  void ReadHeader(std::string_view name);
  void ReadHeaderVariable(std::string_view name);
  void ReadDimVariable(DimStyle& style, std::string_view name);
  bool Section();
  bool DXFLayers();
  bool DXFLineTypes();
  bool DXFBlockRecord();
  bool DXFLayout();
  bool DXFDimStyle();
  bool DXFStyle();
  int32_t StyleRow(std::string_view name) const;
  int32_t LineTypeOfName(std::string_view name, double scale = 1);

  // Entity properties.
  Style ReadStyle();
  static HatchEntity SolidFill(const SolidEntity& solid);
  int32_t LayerRow(std::string_view raw);
  int32_t ColorValue() const;
  int32_t LineTypeValue(int32_t layer);
  int16_t LineWeightValue(int32_t layer) const;
  uint8_t AlphaValue(int32_t layer) const;

  // Entities (entities.cpp, text.cpp, polylines.cpp, hatch.cpp).
  bool DXFLine();
  bool DXFCircle();
  bool DXFSolid();
  bool DXF3DFace();
  bool DXFText();
  bool DXFAttrib();
  bool DXFAttDef();
  bool DXFMText();
  bool DXFEllipse();
  bool DXFSpline();
  bool DXFLeader();
  bool DXFPoint();
  bool DXFRay();
  bool DXFWipeout();
  bool DXFHatch();
  HatchGradient ReadGradient(int32_t ownColor) const;
  bool DXFPoly();
  bool DXFVertex();
  bool DXFSeqEnd();
  bool DXFLwPolyline();
  bool DXFMesh();
  bool DXFMline();
  // Block references clipped by a spatial filter (clips.cpp).
  uint64_t ExtensionDictionary() const;
  void NoteClippable(const InsertRef& ref, std::size_t firstEntry);
  bool ClipOf(uint64_t dictionary, ClipRegion& region) const;
  void PlaceClip(const std::vector<ClipRegion>& clips, int32_t index, const Affine& m);
  uint64_t NestedClip(int32_t block, int32_t insert) const;
  void ClipBlockContents();
  struct ClipMark {
    std::size_t at, other;  // where it goes; where its partner goes
    bool opens;
    int32_t clip;
  };
  static std::size_t RunStart(const std::vector<ClipMark>& marks, std::size_t old, std::size_t end);
  static std::size_t RunEnd(const std::vector<ClipMark>& marks, std::size_t old, std::size_t from);
  bool DXFDictionary();
  bool DXFGeoData();
  bool DXFSpatialFilter();
  bool OutsideSlab(const std::vector<double>& matrix, bool front, double frontDistance, bool back,
                   double backDistance) const;
  bool DXFXRecord();
  void ApplyClips();
  // MULTILEADER (multileader.cpp).
  struct Leader {
    std::vector<std::vector<PointD>> lines;
    PointD last, dogleg{1, 0};
    bool hasLast = false;
    double doglegLength = 0;
  };
  struct LeaderData {
    double scale = 1, textHeight = 0, arrowSize = 0, landingGap = 0;
    bool hasText = false, hasBlock = false, fill = false, frame = false, doglegOn = true;
    std::string text;
    PointD textAt, textDirection{1, 0};
    double textWidth = 0, fillScale = 0;
    int32_t attachment = 1;
    std::optional<double> textColor, fillColor, lineColor, blockColor;
    std::string block, arrowBlock;
    PointD blockAt, blockScale{1, 1};
    double blockRotation = 0;
    int32_t lineKind = 1;  // 0 none, 1 straight, 2 spline
    std::vector<Leader> leaders;
    std::vector<std::pair<uint64_t, std::string>> attributes;  // ATTDEF handle, value
    std::string style;       // its MLEADERSTYLE (340 after the context data)
    bool ownValues = false;  // the entity gives its leader values (170 after the context data)
  };
  struct PendingLeader {
    LeaderData data;
    Style own;
  };
  bool DXFMultiLeader();
  bool DXFMLeaderStyle();
  void FinishPendingLeaders();
  void EmitLeader(const LeaderData& d, const Style& own);
  LeaderData ReadLeaderData() const;
  void EmitArrowhead(PointD tip, PointD from, const LeaderData& d, const Style& s);
  void EmitLeaderText(const LeaderData& d, const Style& own);
  void EmitLeaderBlock(const LeaderData& d, const Style& own);
  // External references (xrefs.cpp).
  std::string ReferenceFile(const std::string& written) const;
  void LoadExternalReference(int32_t block, const std::string& written);
  void PutReferenceIn(const Drawing& reference, int32_t block);
  // Images and underlays (images.cpp).
  bool DXFImage();
  bool DXFUnderlay();
  bool DXFImageDef();
  int32_t PictureRow(std::string_view handleText, bool underlay);
  std::vector<PointD> ClipBoundary(int xCode) const;
  void ResolvePictures();
  // Page sizes read so far, by file and page.
  using PageSizes = std::map<std::pair<std::string, std::string>, std::optional<UnderlayPageSize>>;
  std::optional<UnderlayPageSize> UnderlayPage(PictureFile& picture, const std::string& name,
                                               PageSizes& read);
  // Entities of unknown classes drawn from their proxy graphics (proxy.cpp).
  bool DXFProxy();
  bool DXFClass();
  std::size_t ProxyGraphicsStart() const;
  bool HasProxyGraphics() const { return ProxyGraphicsStart() < pairs_.size(); }
  std::string ProxyGraphicsBytes() const;
  std::string ProxyClassName() const;
  Style ProxyStyle(const ProxyPen& pen, const Style& own);
  void EmitProxyShape(const ProxyShape& shape, const Style& own);
  TextEntity ReadTextFields(const Style& style, int verticalCode);
  TextEntity StyledText(std::string markup, double height, const Style& style, int32_t styleRow) const;
  void ReadEmbeddedColumns(MTextEntity& m) const;
  void EmitCurve(const std::vector<PointD>& points, const Style& style, bool closed = false);
  double CurveTolerance(double curveSize) const;

  // Polylines and meshes (polylines.cpp).
  struct PathVertex {
    PointD point;
    double bulge = 0;
    double startWidth = 0, endWidth = 0;
  };
  struct OpenPolyline {
    Style style;
    int32_t flags = 0;
    double startWidth = 0, endWidth = 0;  // the defaults of the vertices (40/41)
    Affine place;                         // object (or world) coordinates to where the rows go
    int32_t output = 0;                   // the block the rows go to (0: the drawing)
    std::vector<PathVertex> vertices;
    std::vector<std::array<int32_t, 4>> faces;  // polyface face records
    int32_t meshM = 0, meshN = 0;
  };
  void FinishPolyline();
  void EmitPolylinePath(const std::vector<PathVertex>& vertices, bool closed, const Style& style,
                        const Affine& place);
  void EmitPolyface();
  void EmitFaceEdges(const std::vector<PointD>& points, const std::vector<std::vector<int32_t>>& faces,
                     const Style& s, const Affine& place);
  void EmitPolygonMesh();

  // Blocks, inserts and dimensions (blocks.cpp); viewports and layouts (objects.cpp).
  bool DXFBlock();
  bool DXFEndBlock();
  bool DXFInsert();
  bool DXFDimension();
  bool DXFTable();
  bool DXFViewport();
  int32_t BlockRow(std::string_view name);
  int32_t PaperSpaceBlock();
  InsertRef ReadInsertRef(int32_t block, const Style& style);
  void PlaceInsert(const InsertRef& ref);
  void ExpandBlock(int32_t block, const Affine& m, const Style& inherited, int depth);
  template <class Row>
  void ExpandRow(const Row& row, const Affine& place);
  bool InsertAllowed(int32_t block);
  bool WithinBudget(const InsertRef& ref);
  struct Measure {
    int64_t rows = 0;
    int height = 0;
  };
  Measure MeasureBlock(int32_t block, int depth);
  template <class Row>
  void Restyle(Row& row, const Style& inherited);
  int32_t LayerZero();
  void ChooseLayout();
  // Draw order (objects.cpp): where a model-space entity's rows start in the drawing order,
  // the sort handles of a SORTENTSTABLE, and the order they give.
  static uint64_t HandleOf(std::string_view text);
  static bool StartsNoEntity(Handler h);
  void NoteEntityStart(Handler handler);
  void NoteSortableBlock(int32_t block);
  static constexpr std::size_t kNoExpansion = SIZE_MAX;
  std::size_t BeginExpansion(int32_t block);
  void NoteExpansion(std::size_t expansion, std::size_t entry);
  bool DXFSortEnts();
  void ApplyBlockOrders();
  void ApplyDrawOrder();
  void DrawLayout(int32_t block);
  void ShowModelSpaceIn(int32_t layout, const EntityTables& model);
  DimensionInput ReadDimensionInput() const;
  DimStyle DimStyleOf(const std::string& name) const;
  void EmitDimension(const DimensionPicture& picture, const Style& style);

  void Cancel();
  // Notes one more of `kind` in the load report, at the record being read.
  void Note(const std::string& kind, std::string notice = "") const;
  // Counts an expanded row; every so many lets the window breathe and checks for a stop.
  void Tick() {
    if ((++ticks_ & 0xFFFF) == 0) ctx_.Poll();
  }

  // Output: a row in world (or, inside a definition, block) coordinates.
  template <class Row>
  void Emit(const Row& row);
  template <class Row>
  void Store(const Row& row);

  // Extents of what the tables hold, with text boxes (sections.cpp).
  void FinishExtents();

  LoadContext& ctx_;
  Drawing& drawing_;
  std::vector<std::pair<int, std::string_view>> pairs_;
  std::vector<std::pair<int, std::string_view>> embedded_;  // the pairs of an embedded object (after 101)
  std::array<std::string_view, 1000> last_{};
  std::vector<int16_t> setCodes_;
  bool havePending_ = false;
  int pendingCode_ = 0;
  std::string_view pendingValue_;
  bool recordDamaged_ = false;  // the record being read met an unreadable group code
  bool skippingBlock_ = false;  // inside a block definition that could not be opened
  bool hidingAttribs_ = false;  // after an invisible insert, up to its SEQEND
  std::string section_;
  std::string_view name_;       // the record's name (after its code 0)
  std::size_t recordLine_ = 0;  // the line of the record's name
  int64_t budget_ = 0;          // rows the drawing may hold
  uint32_t ticks_ = 0;          // rows expanded, for Tick

  // Block state: rows go to the drawing (output_ 0) or to block output_, in its
  // coordinates (toBlock_ maps world coordinates there).
  int32_t output_ = 0;
  int32_t block_ = 0;  // the block being defined
  Affine toBlock_;
  int32_t paperSpace_ = 0;          // the block that holds paper-space entities of ENTITIES
  std::vector<int32_t> expanding_;  // blocks being expanded, outermost first
  int32_t layerZero_ = 0;           // row of layer "0", found when first needed
  Style attribOwner_;               // the last INSERT, which the ATTRIBs that follow belong to
  uint8_t entityAlpha_ = kOpaque;   // the opacity of the entity being read: every row it emits has it

  // Polyline state.
  bool inPolyline_ = false;
  OpenPolyline polyline_;

  // What the header and the tables said.
  bool headerExtMin_ = false, headerExtMax_ = false;
  double headerExt_[4] = {0, 0, 0, 0};
  double ltScale_ = 1;
  DimStyle headerDimStyle_;
  std::unordered_map<std::string, DimStyle> dimStyles_;
  std::unordered_map<std::string, std::vector<double>> lineTypes_;   // LTYPE elements
  std::map<std::pair<std::string, double>, int32_t> patternStyles_;  // (name, scale) -> style
  std::unordered_map<std::string, std::string> blockRecords_;        // handle -> block name
  std::vector<std::pair<std::string, std::string>> layouts_;         // layout name, block record handle
  // The LAYER and LTYPE entries in table order, and the DXF names of the CLASSES: proxy
  // graphics name layers and line types by position, a proxy entity its class by number.
  std::vector<int32_t> tableLayers_;
  std::vector<std::string> tableLineTypes_;
  std::vector<std::string> classes_;
  std::unordered_map<uint64_t, int32_t> pictureRows_;  // definition handle -> row of Pictures
  // Clipped block references: model-space inserts with an extension dictionary, the
  // dictionary entries on the way to a spatial filter, and the filters.
  struct Clippable {
    uint64_t dictionary = 0;
    Affine toWorld;        // block coordinates to the world
    std::size_t from, to;  // the insert's entries in the drawing order
  };
  std::vector<Clippable> clippable_;
  // Inserts inside block definitions with an extension dictionary: (block << 32 | insert
  // row) -> the dictionary. Expansions made before the filters are known become
  // Clippables; afterwards the blocks carry their clips themselves.
  std::unordered_map<uint64_t, uint64_t> nestedClippable_;
  bool clipsResolved_ = false;
  std::unordered_map<uint64_t, uint64_t> filterLinks_;  // dictionary -> its ACAD_FILTER or SPATIAL entry
  struct SpatialFilter {
    std::vector<PointD> boundary;
    Affine toBlock;            // the world at clipping time to block coordinates
    uint64_t extension = 0;    // its extension dictionary (an inverted clip's hole)
    bool outsideSlab = false;  // its front and back planes leave out the block's plane
  };
  std::unordered_map<uint64_t, SpatialFilter> spatialFilters_;
  std::unordered_map<uint64_t, std::vector<PointD>> invertedHoles_;  // XRECORD -> hole
  // A viewport of a layout that shows model space in plan view: where it is on the paper
  // (centre 10/20, size 40/41) and what it shows (view centre 12/22 about the target
  // 17/27, view height 45, twist 51).
  struct Viewport {
    int32_t layout = 0;
    PointD centre;
    double width = 0, height = 0;
    PointD viewCentre, target;
    double viewHeight = 0, twist = 0;
  };
  std::vector<Viewport> viewports_;
  Box layoutBox_;  // the extents of a layout drawn instead of model space

  // Draw order of model space. The starts are kept only when model space's block record
  // has an extension dictionary, where a SORTENTSTABLE would hang.
  std::string modelRecord_;  // the handle of *Model_Space's block record
  bool keepStarts_ = false;
  std::vector<std::pair<uint64_t, std::size_t>> entityStarts_;  // entity handle, first entry
  std::size_t entitiesEnd_ = 0;                                 // the entries of ENTITIES end here
  std::unordered_map<uint64_t, uint64_t> sortHandles_;          // entity handle -> sort handle
  // Draw order of blocks and layouts: the block records with an extension dictionary,
  // the entity starts of their blocks, each expansion of them, their sort tables.
  std::unordered_set<std::string> sortableRecords_;
  struct BlockOrder {
    std::string record;
    std::vector<std::pair<uint64_t, uint32_t>> starts;  // entity handle, first entry in the block
  };
  std::unordered_map<int32_t, BlockOrder> blockOrders_;
  struct BlockExpansion {
    int32_t block = 0;
    std::vector<std::size_t> starts;  // where each entity's rows start in the drawing order
    std::size_t end = 0, next = 0;
  };
  std::vector<BlockExpansion> expansions_;
  static constexpr std::size_t kMaxExpansionStarts = 4'000'000;  // 32 MB of starts at most
  std::size_t expansionStarts_ = 0;
  bool recordExpansions_ = true;
  std::unordered_map<std::string, std::unordered_map<uint64_t, uint64_t>> blockSortHandles_;
  std::vector<PendingLeader> pendingLeaders_;
  std::unordered_map<std::string, LeaderData> leaderStyles_;  // MLEADERSTYLE by handle
  // The ATTDEFs of blocks by handle (in their block's coordinates).
  std::unordered_map<uint64_t, TextEntity> attributeDefinitions_;
};

}  // namespace dxfimport
