#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QSpinBox;

namespace dxfimport {

class frmImport;

// The Background Look dialog: how far every ink fades toward the background (as CAD tools
// fade an underlay), whether every ink is drawn in one colour, and whether PNG and TIFF
// pictures are saved on a transparent background. OK keeps the choice for
// the next runs and draws the drawing again; Cancel changes nothing.
class frmBackgroundLook : public QDialog {
 public:
  explicit frmBackgroundLook(frmImport& owner);

  QSpinBox* fade() const { return fade_; }
  QCheckBox* monochrome() const { return monochrome_; }
  QComboBox* color() const { return color_; }
  QCheckBox* transparent() const { return transparent_; }
  // The colour chosen as 0x00BBGGRR, or -1 when every ink keeps its own.
  int32_t MonochromeChosen() const;
  void accept() override;

 private:
  frmImport& owner_;
  QSpinBox* fade_;
  QCheckBox* monochrome_;
  QComboBox* color_;
  QCheckBox* transparent_;
};

}  // namespace dxfimport
