#pragma once

// The importer as a host application uses it in-process (library dxfimport_host):
//
//   dxfimport::DXF dxf;                  // a QApplication must exist
//   dxf.strDXFFileName("plan.dxf");
//   dxf.ShowDialog();                    // the modal viewer; returns when the user leaves it
//   std::string bitmap = dxf.strBmpFileName();  // "" when cancelled or nothing loaded
//
// The same from another process: dxfimport --automation plan.dxf prints the bitmap path.

#include <memory>
#include <string>

namespace dxfimport {

class frmImport;

class DXF {
 public:
  DXF();
  ~DXF();  // Class_Terminate
  DXF(const DXF&) = delete;
  DXF& operator=(const DXF&) = delete;

  // The DXF file that ShowDialog opens.
  void strDXFFileName(const std::string& fileName);
  // Shows the viewer modally with the file opened; returns at once when no file is named.
  void ShowDialog();
  // Writes the current picture to a new temporary bitmap (~CV*.tmp) and returns its path;
  // "" when the user chose "Cancel Import" or nothing is loaded. Each call makes a new file.
  std::string strBmpFileName();
  // Where the last bitmap lies on the drawing: the six lines of its world file (pixel
  // size in x, two rotation terms, negative pixel size in y, drawing coordinates of the
  // centre of the top-left pixel); "" when there is no bitmap.
  // When the drawing's coordinate reference system is known (strCRS), the numbers are in
  // its coordinates.
  std::string strPlacement() const { return placement_; }
  // The coordinate reference system of the last bitmap's placement as WKT (from the
  // drawing's GEODATA or a NAME.prj beside it); "" when it is not known.
  std::string strCRS() const { return crs_; }
  // The look of the picture as a background, kept between runs (the viewer's Options >
  // Background Look): every ink faded this many percent toward the background (0..100);
  // every ink in one colour (a name or #rrggbb; "": each its own).
  void intFade(int percent);
  int intFade() const;
  void strMonochrome(const std::string& color);
  std::string strMonochrome() const;
  // PNG and TIFF pictures saved from the viewer on a transparent background (the bitmap
  // strBmpFileName hands back is a BMP, which has none).
  void booTransparentBackground(bool transparent);
  bool booTransparentBackground() const;
  // Reads the file with the legacy reading rules (off: the modern profile).
  void booLegacyReadingRules(bool legacy) { legacy_ = legacy; }

  // Closes every window of the importer.
  void Class_Terminate();

  // The viewer window, once ShowDialog has made it (tests).
  frmImport* window() const;

 private:
  std::string dxfFileName_;
  std::string bmpFileName_;
  std::string placement_;
  std::string crs_;
  bool legacy_ = false;
};

}  // namespace dxfimport
