#pragma once

#include <QDialog>
#include <QSize>
#include <array>

class QComboBox;
class QLabel;
class QRadioButton;
class QSpinBox;

namespace dxfimport {

class frmImport;

// The picture-size dialog: four landscape and four portrait sizes, and a size that follows
// from a scale and a resolution (the extents at 1:N and so many dots per inch, the unit
// from $INSUNITS or chosen when the drawing does not say). OK gives the picture the chosen
// size and draws the drawing again; Cancel changes nothing; Help shows "help".
class frmChooseSize : public QDialog {
 public:
  struct Size {
    int width, height;
  };
  static constexpr std::array<Size, 8> kSizes = {
      {{640, 480}, {800, 600}, {1024, 768}, {1152, 864}, {480, 640}, {600, 800}, {768, 1024}, {864, 1152}}};

  frmChooseSize(frmImport& owner);

  // The option pre-selected for a picture of this size, by its width first (-1: none).
  // A width of 1024 selects option 2 only with a height of 768 and option 7 only with a
  // height of 1152: the asymmetry is kept, so 864 x 1152 selects nothing.
  static int PreselectedOption(int width, int height);

  static constexpr int kScaleOption = 8;
  static constexpr int kLargestSide = 16384;  // the viewer's picture, on a side

  // Index of the checked option (kScaleOption for the scale), -1 when none is.
  int SelectedOption() const;
  // The extents' size in pixels at the scale, resolution and unit shown (0 x 0 when the
  // drawing has no extents).
  QSize ScaledSize() const;
  void SelectOption(int index);

  void cmd1_Click(int index);

 private:
  frmImport& owner_;
  void ShowScaledSize();

  std::array<QRadioButton*, 9> optSize_{};
  QSpinBox* scale_ = nullptr;
  QSpinBox* dpi_ = nullptr;
  QComboBox* units_ = nullptr;
  QLabel* scaledSize_ = nullptr;
};

}  // namespace dxfimport
