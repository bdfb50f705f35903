#pragma once

#include <array>
#include <string>
#include <vector>

#include "dxf/model/geometry.h"

namespace dxfimport {

// The dimension variables of a DIMSTYLE entry that drawing a dimension needs, in drawing
// units before DIMSCALE (AutoCAD's defaults until the style says otherwise).
struct DimStyle {
  double scale = 1;           // DIMSCALE (40)
  double arrowSize = 0.18;    // DIMASZ (41)
  double extOffset = 0.0625;  // DIMEXO (42)
  double extExtend = 0.18;    // DIMEXE (44)
  double textHeight = 0.18;   // DIMTXT (140)
  double gap = 0.09;          // DIMGAP (147)
  int decimals = 4;           // DIMDEC (271)
};

// A DIMENSION's own groups.
struct DimensionInput {
  int type =
      0;  // 70 & 7: 0 linear, 1 aligned, 2 angular, 3 diameter, 4 radius, 5 angular 3-point, 6 ordinate
  bool ordinateX = false;  // 70 bit 64
  PointD p10, p11, p13, p14, p15, p16;
  double rotation = 0;  // 50, degrees (linear)
  std::string text;     // 1: "" or "<>" for the measurement
};

// What a dimension looks like: lines, arcs, filled arrowheads and one text (centred on
// its point, along its rotation).
struct DimensionPicture {
  struct Arc {
    PointD centre;
    double radius = 0, startDegrees = 0, endDegrees = 0;
  };
  std::vector<std::array<PointD, 2>> lines;
  std::vector<Arc> arcs;
  std::vector<std::array<PointD, 3>> arrows;
  PointD textAt;
  double textHeight = 0;
  double textRotation = 0;  // degrees
  std::string text;
};

// Draws a dimension from its definition points and style: extension lines, the
// dimension line or arc, arrowheads at both ends and the measured (or overriding) text.
DimensionPicture DrawDimension(const DimensionInput& input, const DimStyle& style);

// The measurement written as the style writes numbers: `decimals` places, trailing zeros
// and a trailing point dropped.
std::string FormatMeasurement(double value, int decimals);

}  // namespace dxfimport
