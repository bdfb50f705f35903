#include "layers/layer_dialog.h"

#include <QColorDialog>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "dxf/model/colors.h"
#include "dxf/model/drawing.h"
#include "render/redraw.h"
#include "support/log.h"
#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"
#include "support/text_decode.h"
#include "support/texts.h"
#include "viewer/dialog_font.h"

namespace dxfimport {
namespace {

constexpr const char* kModule = "LAYER";

QString Text(int id) { return QString::fromStdString(LoadResText(id)); }

// Runs an event step; a run-time error in it is reported under the step's name.
template <class F>
void Step(const char* procedure, F&& f) {
  RunReported(procedure, kModule, std::forward<F>(f));
}

int32_t ToRgb(const QColor& c) { return c.red() | (c.green() << 8) | (c.blue() << 16); }

// A small square in a colour number's colour (blue, green, red from the high byte down),
// framed so that white shows.
QIcon Swatch(int32_t bgr) {
  QPixmap pixmap(14, 14);
  pixmap.fill(QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF));
  QPainter painter(&pixmap);
  painter.setPen(Qt::gray);
  painter.drawRect(0, 0, 13, 13);
  return QIcon(pixmap);
}

}  // namespace

void frmLayer::Open(QWidget* owner, Drawing& drawing, ZoomState& zoom, std::function<void()> redraw,
                    std::function<std::optional<QColor>(QColor)> chooseColor) {
  if (drawing.LayerCount() == 0) {
    ShowMessage(MessageIcon::Information, LoadResText(1046));
    return;
  }
  if (drawing.LayerCount() > kMaxLayers) {
    LogCritical("Cannot edit layers: layer count > 2000");
    ShowMessage(MessageIcon::Information, LoadResText(1047));
    return;
  }
  frmLayer dialog(owner, drawing, zoom, std::move(redraw));
  if (chooseColor) dialog.ChooseColor = std::move(chooseColor);
  dialog.exec();
}

frmLayer::frmLayer(QWidget* owner, Drawing& drawing, ZoomState& zoom, std::function<void()> redraw)
    : QDialog(owner), drawing_(drawing), zoom_(zoom), redraw_(std::move(redraw)) {
  setObjectName("frmLayer");
  setWindowTitle(Text(1008));
  ChooseColor = [this](QColor current) -> std::optional<QColor> {
    QColor chosen = QColorDialog::getColor(current, this);
    if (!chosen.isValid()) return std::nullopt;
    return chosen;
  };
  grdLayer_ = new QTableWidget(0, 3, this);
  grdLayer_->setObjectName("grdLayer");
  grdLayer_->setHorizontalHeaderLabels({Text(1044), Text(1045), Text(1009)});
  grdLayer_->verticalHeader()->hide();
  grdLayer_->setSelectionMode(QAbstractItemView::SingleSelection);
  grdLayer_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grdLayer_->setColumnWidth(0, 220);
  grdLayer_->setColumnWidth(1, 113);
  grdLayer_->horizontalHeader()->setStretchLastSection(true);
  grdLayer_->setMinimumSize(440, 200);
  // A click on the name column's header sorts by name (again: the other way round).
  grdLayer_->horizontalHeader()->setSectionsClickable(true);
  connect(grdLayer_->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int section) {
    if (section != 0) return;
    cboOnOff_->hide();
    sortOrder_ = sortOrder_ == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
    grdLayer_->sortItems(0, sortOrder_);
  });
  filter_ = new QLineEdit(this);
  filter_->setObjectName("txtFilter");
  filter_->setPlaceholderText(Text(1044));
  filter_->setClearButtonEnabled(true);
  connect(filter_, &QLineEdit::textChanged, this, &frmLayer::FilterRows);
  cboOnOff_ = new QComboBox(grdLayer_->viewport());
  cboOnOff_->setObjectName("cboOnOff");
  cboOnOff_->addItems({Text(1010), Text(1011)});
  cboOnOff_->hide();

  auto* frame = new QGroupBox(Text(1012), this);
  frame->setObjectName("Frame2");
  option1_[0] = new QRadioButton(Text(1014), frame);
  option1_[1] = new QRadioButton(Text(1013), frame);
  option1_[zoom_.ColorByLayer ? 1 : 0]->setChecked(true);
  auto* frameLayout = new QVBoxLayout(frame);
  for (int i = 0; i < 2; ++i) {
    option1_[i]->setObjectName(QString("Option1_%1").arg(i));
    frameLayout->addWidget(option1_[i]);
    connect(option1_[i], &QRadioButton::clicked, this, [this, i] { Option1_Click(i); });
  }
  cmdColor_ = new QPushButton(Text(1015), this);
  cmdColor_->setObjectName("cmdColor");
  connect(cmdColor_, &QPushButton::clicked, this, &frmLayer::cmdColor_Click);
  auto* apply = new QPushButton(Text(502), this);
  apply->setObjectName("cmdClose0");
  auto* ok = new QPushButton(Text(500), this);
  ok->setObjectName("cmdClose1");
  ok->setDefault(true);
  connect(apply, &QPushButton::clicked, this, [this] { cmdClose_Click(0); });
  connect(ok, &QPushButton::clicked, this, [this] { cmdClose_Click(1); });

  auto* side = new QVBoxLayout;
  side->addWidget(frame);
  side->addWidget(cmdColor_);
  side->addStretch();
  side->addWidget(apply);
  side->addWidget(ok);
  auto* list = new QVBoxLayout;
  list->addWidget(filter_);
  list->addWidget(grdLayer_, 1);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(list, 1);
  layout->addLayout(side);

  connect(grdLayer_, &QTableWidget::itemSelectionChanged, this, &frmLayer::grdLayer_SelChange);
  connect(cboOnOff_, &QComboBox::activated, this, [this] { cboOnOff_LostFocus(); });
  ApplyDialogFont(this, true);
  FillGrid();
  SetLayerState();
}

void frmLayer::FillGrid() {
  grdLayer_->setRowCount(drawing_.LayerCount());
  for (int i = 0; i < drawing_.LayerCount(); ++i) {
    const LayerEntry& layer = drawing_.Layers[std::size_t(i)];
    auto cell = [](const QString& text) {
      auto* item = new QTableWidgetItem(text);
      item->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
      return item;
    };
    QTableWidgetItem* name = cell(QString::fromStdString(PadToWidth(layer.Name, 20)));
    name->setData(Qt::UserRole, i);  // the layer's row, whatever order the grid is sorted in
    grdLayer_->setItem(i, 0, name);
    QTableWidgetItem* colour = cell(QString::number(layer.Color & 0xFFFFFF));
    colour->setIcon(Swatch(EntityRgb(0, i + 1, drawing_.Layers, true, 0)));
    grdLayer_->setItem(i, 1, colour);
    grdLayer_->setItem(i, 2, cell(layer.IsOn ? Text(1010) : Text(1011)));
  }
  if (grdLayer_->rowCount() > 0) grdLayer_->setCurrentCell(0, 0);
}

void frmLayer::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  active_ = true;
}

void frmLayer::SetLayerState() {
  Step("SetLayerState", [this] {
    QTableWidgetItem* item = grdLayer_->currentItem();
    cmdColor_->setEnabled(item && !item->text().isEmpty());
  });
}

// Column 2 is edited through the drop-down, which is placed over the selected cell.
void frmLayer::grdLayer_SelChange() {
  Step("grdLayer_SelChange", [this] {
    const int row = grdLayer_->currentRow(), column = grdLayer_->currentColumn();
    LogDebug("grdLayer_SelChange with row & col " + std::to_string(row + 1) + " " + std::to_string(column));
    if (!active_) {
      cboOnOff_->hide();
      return;
    }
    if (row >= 0 && column == 2) {
      QRect cell = grdLayer_->visualRect(grdLayer_->model()->index(row, column));
      cboOnOff_->setGeometry(cell.left(), cell.top(), cell.width(), cboOnOff_->sizeHint().height());
      cboOnOff_->setCurrentText(grdLayer_->item(row, 2)->text());
      cboOnOff_->setProperty("row", row);
      cboOnOff_->show();
      cboOnOff_->setFocus();
    } else {
      cboOnOff_->hide();
    }
    SetLayerState();
  });
}

void frmLayer::cboOnOff_LostFocus() {
  Step("cboOnOff_LostFocus", [this] {
    int row = cboOnOff_->property("row").toInt();
    if (QTableWidgetItem* item = grdLayer_->item(row, 2)) item->setText(cboOnOff_->currentText());
    dirty_ = true;
  });
}

void frmLayer::Option1_Click(int index) {
  Step("Option1_Click", [this, index] {
    zoom_.ColorByLayer = index == 1;
    SetLayerState();
  });
}

void frmLayer::cmdColor_Click() {
  Step("cmdColor_Click", [this] {
    const int row = grdLayer_->currentRow();
    if (row < 0) return;
    std::optional<QColor> chosen = ChooseColor(Qt::white);
    if (!chosen) return;  // cancelled: nothing changes
    grdLayer_->setCurrentCell(row, 1);
    grdLayer_->item(row, 1)->setText(QString::number(ToRgb(*chosen)));
    grdLayer_->item(row, 1)->setIcon(Swatch(ToRgb(*chosen)));
    SetLayerState();
    dirty_ = true;
  });
}

// Apply (0) and OK (1): every row back into the layer table; a redraw when something
// changed.
void frmLayer::cmdClose_Click(int index) {
  Step("cmdClose_Click", [this, index] {
    if (index == 1) active_ = false;
    for (int i = 0; i < drawing_.LayerCount(); ++i) {
      const QString color = grdLayer_->item(i, 1)->text();
      if (!HasLeadingNumber(color.toStdString())) throw RunTimeError(kErrTypeMismatch);
      LayerEntry& layer = drawing_.Layers[std::size_t(grdLayer_->item(i, 0)->data(Qt::UserRole).toInt())];
      layer.Color = CLng(Val(color.toStdString()));
      layer.IsOn = grdLayer_->item(i, 2)->text().compare(Text(1010), Qt::CaseInsensitive) == 0 ? -1 : 0;
    }
    if (index == 1) hide();
    if (dirty_) {
      if (redraw_) redraw_();
      dirty_ = false;
    }
  });
}

// Shows only the layers whose name holds the typed text (case aside).
void frmLayer::FilterRows(const QString& text) {
  cboOnOff_->hide();
  const QString wanted = text.trimmed();
  for (int i = 0; i < grdLayer_->rowCount(); ++i)
    grdLayer_->setRowHidden(
        i, !wanted.isEmpty() && !grdLayer_->item(i, 0)->text().contains(wanted, Qt::CaseInsensitive));
}

}  // namespace dxfimport
