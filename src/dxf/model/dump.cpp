#include "dxf/model/dump.h"

#include <cstdio>
#include <string>

namespace dxfimport {
namespace {

class RowWriter {
 public:
  // Numbers are written with `digits` significant digits (as many as their precision).
  RowWriter(std::ostream& out, int digits) : out_(out), digits_(digits) {}
  RowWriter& operator<<(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.*g", digits_, v);
    return Field(buf);
  }
  RowWriter& operator<<(int32_t v) { return Field(std::to_string(v)); }
  RowWriter& operator<<(const std::string& text) {
    std::string escaped;
    for (char c : text) escaped += c == '\t' ? std::string("\\t") : std::string(1, c);
    return Field(escaped);
  }
  void End() {
    out_ << '\n';
    first_ = true;
  }

 private:
  RowWriter& Field(const std::string& s) {
    if (!first_) out_ << '\t';
    out_ << s;
    first_ = false;
    return *this;
  }
  std::ostream& out_;
  int digits_;
  bool first_ = true;
};

void TextFields(RowWriter& w, const TextEntity& t) {
  w << t.Text << t.Height << t.Rotation << t.HorzJustify << t.Layer << t.Underline << t.Color << t.FontName
    << t.FontFactor;
}

constexpr const char* kTextHeader =
    "Text\tHeight\tRotation\tHorzJustify\tLayer\tUnderline\tColor\tFontName\tFontFactor";

template <class Row, class Fields>
void Table(std::ostream& out, int digits, const char* name, const std::string& header,
           const std::vector<Row>& rows, Fields fields) {
  if (rows.empty()) return;
  out << "# " << name << '\n' << header << '\n';
  RowWriter w(out, digits);
  for (const Row& row : rows) {
    fields(w, row);
    w.End();
  }
}

}  // namespace

void DumpTables(const Drawing& d, std::ostream& out) {
  const int digits = d.Rules().DumpDigits;
  Table(out, digits, "Layers", "Name\tColor\tIsOn", d.Layers,
        [](RowWriter& w, const LayerEntry& r) { w << std::string(r.Name) << r.Color << r.IsOn; });
  Table(out, digits, "Blocks", "BaseX\tBaseY\tName\tRecords", d.Blocks,
        [](RowWriter& w, const BlockEntry& r) {
          w << r.BaseX << r.BaseY << r.Name << int32_t(r.Content.DrawSeq.size());
        });
  Table(out, digits, "Lines", "X1\tY1\tX2\tY2\tLayer\tColor\tLineType", d.Lines,
        [](RowWriter& w, const LineEntity& r) {
          w << r.X1 << r.Y1 << r.X2 << r.Y2 << r.Layer << r.Color << r.LineType;
        });
  Table(out, digits, "PolySegs", "X1\tY1\tX2\tY2\tWidth\tLayer\tColor\tBulge", d.PolySegs,
        [](RowWriter& w, const PolySegment& r) {
          w << r.X1 << r.Y1 << r.X2 << r.Y2 << r.Width << r.Layer << r.Color << r.Bulge;
        });
  Table(out, digits, "Texts", std::string("X\tY\t") + kTextHeader, d.Texts,
        [](RowWriter& w, const TextEntity& r) {
          w << r.X << r.Y;
          TextFields(w, r);
        });
  Table(out, digits, "Arcs", "CenterX\tCenterY\tRadius\tStartAngle\tEndAngle\tLayer\tColor\tLineType", d.Arcs,
        [](RowWriter& w, const ArcEntity& r) {
          w << r.CenterX << r.CenterY << r.Radius << r.StartAngle << r.EndAngle << r.Layer << r.Color
            << r.LineType;
        });
  Table(out, digits, "Solids", "X1\tY1\tX2\tY2\tX4\tY4\tX3\tY3\tLayer\tColor", d.Solids,
        [](RowWriter& w, const SolidEntity& r) {
          w << r.X1 << r.Y1 << r.X2 << r.Y2 << r.X4 << r.Y4 << r.X3 << r.Y3 << r.Layer << r.Color;
        });
  Table(out, digits, "Attribs", std::string("Block\tX\tY\t") + kTextHeader, d.Attribs,
        [](RowWriter& w, const AttribEntity& r) {
          w << r.Block << r.Text.X << r.Text.Y;
          TextFields(w, r.Text);
        });
  Table(out, digits, "Hatches", "Layer\tColor\tLoops\tPoints", d.Hatches,
        [](RowWriter& w, const HatchEntity& r) {
          w << r.Layer << r.Color << int32_t(r.LoopStarts.size()) << int32_t(r.Points.size());
        });
  Table(out, digits, "Ellipses", "CenterX\tCenterY\tUX\tUY\tVX\tVY\tStart\tEnd\tLayer\tColor\tLineType",
        d.Ellipses, [](RowWriter& w, const EllipseEntity& r) {
          w << r.CenterX << r.CenterY << r.UX << r.UY << r.VX << r.VY << r.Start << r.End << r.Layer
            << r.Color << r.LineType;
        });
  Table(out, digits, "Points", "X\tY\tLayer\tColor", d.Points,
        [](RowWriter& w, const PointEntity& r) { w << r.X << r.Y << r.Layer << r.Color; });
  Table(out, digits, "Rays", "X\tY\tDX\tDY\tBothWays\tLayer\tColor", d.Rays,
        [](RowWriter& w, const RayEntity& r) {
          w << r.X << r.Y << r.DX << r.DY << int32_t(r.BothWays) << r.Layer << r.Color;
        });
  Table(out, digits, "MTexts", "X\tY\tHeight\tWidth\tRotation\tAttachment\tLayer\tColor\tContent", d.MTexts,
        [](RowWriter& w, const MTextEntity& r) {
          w << r.X << r.Y << r.Height << r.Width << r.Rotation << r.Attachment << r.Layer << r.Color
            << r.Content;
        });
  Table(out, digits, "DrawSeq", "Kind\tIndex", d.DrawSeq,
        [](RowWriter& w, const SeqEntry& r) { w << r.Kind << r.Index; });
}

}  // namespace dxfimport
