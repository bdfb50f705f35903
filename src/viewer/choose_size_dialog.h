#pragma once

#include <QDialog>

#include <array>

class QRadioButton;

namespace dxfimport {

class frmImport;

// The picture-size dialog: four landscape and four portrait sizes. OK gives the picture
// the chosen size and draws the drawing again; Cancel changes nothing; Help shows "help".
class frmChooseSize : public QDialog {
 public:
  struct Size {
    int width, height;
  };
  static constexpr std::array<Size, 8> kSizes = {{{640, 480}, {800, 600}, {1024, 768}, {1152, 864},
                                                  {480, 640}, {600, 800}, {768, 1024}, {864, 1152}}};

  frmChooseSize(frmImport& owner);

  // The option pre-selected for a picture of this size, by its width first (-1: none).
  // A width of 1024 selects option 2 only with a height of 768 and option 7 only with a
  // height of 1152: the asymmetry is kept, so 864 x 1152 selects nothing.
  static int PreselectedOption(int width, int height);

  // Index of the checked option, -1 when none is.
  int SelectedOption() const;
  void SelectOption(int index);

  void cmd1_Click(int index);

 private:
  frmImport& owner_;
  std::array<QRadioButton*, 8> optSize_{};
};

}  // namespace dxfimport
