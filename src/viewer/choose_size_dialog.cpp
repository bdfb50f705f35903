#include "viewer/choose_size_dialog.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

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
  layout->addLayout(buttons);
  ApplyDialogFont(this, true);
  const QImage& picture = owner_.Picture1()->image();
  SelectOption(PreselectedOption(picture.width(), picture.height()));
}

int frmChooseSize::PreselectedOption(int width, int height) {
  switch (width) {
    case 640: return 0;
    case 800: return 1;
    case 1152: return 3;
    case 480: return 4;
    case 600: return 5;
    case 768: return 6;
    case 1024: return height == 768 ? 2 : height == 1152 ? 7 : -1;
    default: return -1;
  }
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
      if (selected >= 0) {
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
