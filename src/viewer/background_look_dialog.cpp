#include "viewer/background_look_dialog.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

#include "support/texts.h"
#include "viewer/dialog_font.h"
#include "viewer/main_window.h"

namespace dxfimport {
namespace {

QString Text(int id) { return QString::fromStdString(LoadResText(id)); }

int32_t Bgr(QColor c) { return c.red() | (c.green() << 8) | (c.blue() << 16); }

}  // namespace

frmBackgroundLook::frmBackgroundLook(frmImport& owner) : QDialog(&owner), owner_(owner) {
  setObjectName("frmBackgroundLook");
  setWindowTitle(Text(1090).remove('&').remove("..."));
  fade_ = new QSpinBox(this);
  fade_->setObjectName("txtFade");
  fade_->setRange(0, 100);
  fade_->setSuffix(" %");
  fade_->setValue(owner_.zoom().Display.Fade);
  monochrome_ = new QCheckBox(Text(1092), this);
  monochrome_->setObjectName("chkMonochrome");
  color_ = new QComboBox(this);
  color_->setObjectName("cboColor");
  color_->setEditable(true);  // a name or #rrggbb
  for (const char* name : {"black", "dimgray", "navy", "darkgreen", "maroon"}) color_->addItem(name);
  const int32_t kept = owner_.zoom().Display.Monochrome;
  monochrome_->setChecked(kept >= 0);
  if (kept >= 0) color_->setCurrentText(QColor(kept & 0xFF, (kept >> 8) & 0xFF, (kept >> 16) & 0xFF).name());
  color_->setEnabled(kept >= 0);
  connect(monochrome_, &QCheckBox::toggled, color_, &QWidget::setEnabled);
  transparent_ = new QCheckBox(Text(1096), this);
  transparent_->setObjectName("chkTransparent");
  transparent_->setChecked(owner_.Look().Transparent);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* rows = new QFormLayout(this);
  rows->addRow(Text(1091), fade_);
  rows->addRow(monochrome_);
  rows->addRow(Text(1093), color_);
  rows->addRow(transparent_);
  rows->addRow(buttons);
  ApplyDialogFont(this, true);
}

int32_t frmBackgroundLook::MonochromeChosen() const {
  const QColor chosen(color_->currentText().trimmed());
  return monochrome_->isChecked() && chosen.isValid() ? Bgr(chosen) : -1;
}

void frmBackgroundLook::accept() {
  owner_.SetBackgroundLook({fade_->value(), MonochromeChosen(), transparent_->isChecked()});
  QDialog::accept();
}

}  // namespace dxfimport
