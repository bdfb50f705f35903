#include "viewer/choose_size_dialog.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <cmath>

#include "render/world_file.h"
#include "support/messages.h"
#include "support/texts.h"
#include "viewer/dialog_font.h"
#include "viewer/main_window.h"
#include "viewer/picture_box.h"

namespace dxfimport {
namespace {

QString Text(int id) { return QString::fromStdString(LoadResText(id)); }

}  // namespace

frmChooseSize::frmChooseSize(frmImport& owner) : QDialog(&owner), owner_(owner) {
  setObjectName("frmChooseSize");
  setWindowTitle(Text(1004));
  auto* group = new QButtonGroup(this);
  auto* sizes = new QHBoxLayout;
  for (int g = 0; g < 2; ++g) {
    auto* box = new QGroupBox(Text(g == 0 ? 1005 : 1006), this);
    auto* column = new QVBoxLayout(box);
    for (int i = g * 4; i < g * 4 + 4; ++i) {
      const Size& size = kSizes[std::size_t(i)];
      auto* option = new QRadioButton(QString("%1 x %2").arg(size.width).arg(size.height), box);
      option->setObjectName(QString("optSize%1").arg(i));
      group->addButton(option, i);
      column->addWidget(option);
      optSize_[std::size_t(i)] = option;
    }
    sizes->addWidget(box);
  }
  auto* scaleBox = new QGroupBox(this);
  auto* scaleRows = new QFormLayout(scaleBox);
  auto* byScale = new QRadioButton(Text(1082), scaleBox);
  byScale->setObjectName("optSize8");
  group->addButton(byScale, kScaleOption);
  optSize_[kScaleOption] = byScale;
  scale_ = new QSpinBox(scaleBox);
  scale_->setObjectName("txtScale");
  scale_->setRange(1, 1000000);
  scale_->setValue(100);
  dpi_ = new QSpinBox(scaleBox);
  dpi_->setObjectName("txtDpi");
  dpi_->setRange(10, 2400);
  dpi_->setValue(96);
  units_ = new QComboBox(scaleBox);
  units_->setObjectName("cboUnits");
  for (const char* unit : {"mm", "cm", "m", "in", "ft"}) units_->addItem(unit, UnitsCode(unit));
  const int said = owner_.drawing().InsUnits;
  units_->setEnabled(MillimetresPerUnit(said) == 0);
  scaledSize_ = new QLabel(scaleBox);
  scaledSize_->setObjectName("lblScaledSize");
  scaleRows->addRow(byScale);
  scaleRows->addRow(Text(1083), scale_);
  scaleRows->addRow(Text(1084), dpi_);
  scaleRows->addRow(Text(1085), units_);
  scaleRows->addRow(scaledSize_);
  for (QSpinBox* box : {scale_, dpi_}) {
    connect(box, &QSpinBox::valueChanged, this, [this] {
      optSize_[kScaleOption]->setChecked(true);
      ShowScaledSize();
    });
  }
  connect(units_, &QComboBox::currentIndexChanged, this, [this] { ShowScaledSize(); });
  ShowScaledSize();

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  const int captions[3] = {500, 501, 503};
  for (int i = 0; i < 3; ++i) {
    auto* button = new QPushButton(Text(captions[i]), this);
    button->setObjectName(QString("cmd1_%1").arg(i));
    if (i == 0) button->setDefault(true);
    connect(button, &QPushButton::clicked, this, [this, i] { cmd1_Click(i); });
    buttons->addWidget(button);
  }
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(sizes);
  layout->addWidget(scaleBox);
  layout->addLayout(buttons);
  ApplyDialogFont(this, true);
  const QImage& picture = owner_.Picture1()->image();
  SelectOption(PreselectedOption(picture.width(), picture.height()));
}

int frmChooseSize::PreselectedOption(int width, int height) {
  switch (width) {
    case 640:
      return 0;
    case 800:
      return 1;
    case 1152:
      return 3;
    case 480:
      return 4;
    case 600:
      return 5;
    case 768:
      return 6;
    case 1024:
      return height == 768 ? 2 : height == 1152 ? 7 : -1;
    default:
      return -1;
  }
}

QSize frmChooseSize::ScaledSize() const {
  const Drawing& d = owner_.drawing();
  const int said = d.InsUnits;
  const int units = MillimetresPerUnit(said) != 0 ? said : units_->currentData().toInt();
  const double perUnit = PixelsPerUnit(scale_->value(), dpi_->value(), units);
  const double width = std::abs(d.ExtMaxX - d.ExtMinX) * perUnit,
               height = std::abs(d.ExtMaxY - d.ExtMinY) * perUnit;
  if (!(width >= 0.5 && height >= 0.5) || !(width < 1e9 && height < 1e9)) return {};
  return {int(std::ceil(width - 1e-6)), int(std::ceil(height - 1e-6))};
}

void frmChooseSize::ShowScaledSize() {
  const QSize size = ScaledSize();
  scaledSize_->setText(
      SubstituteArgs(LoadResText(1086), {std::to_string(size.width()), std::to_string(size.height())})
          .c_str());
}

int frmChooseSize::SelectedOption() const {
  for (std::size_t i = 0; i < optSize_.size(); ++i)
    if (optSize_[i]->isChecked()) return int(i);
  return -1;
}

void frmChooseSize::SelectOption(int index) {
  if (index >= 0 && index < int(optSize_.size())) optSize_[std::size_t(index)]->setChecked(true);
}

void frmChooseSize::cmd1_Click(int index) {
  switch (index) {
    case 0: {
      int selected = SelectedOption();
      if (selected == kScaleOption) {
        const QSize size = ScaledSize();
        if (size.isEmpty() || size.width() > kLargestSide || size.height() > kLargestSide) {
          ShowMessage(
              MessageIcon::Information,
              SubstituteArgs(LoadResText(1087), {std::to_string(size.width()), std::to_string(size.height()),
                                                 std::to_string(kLargestSide)}));
          return;
        }
        owner_.ChoosePictureSize(size.width(), size.height(), dpi_->value());
      } else if (selected >= 0) {
        const Size& size = kSizes[std::size_t(selected)];
        owner_.ChoosePictureSize(size.width, size.height);
      }
      accept();
      return;
    }
    case 1:
      reject();
      return;
    default:
      ShowMessage(MessageIcon::Information, "help");
  }
}

}  // namespace dxfimport
