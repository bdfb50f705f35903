#pragma once

#include <QColor>
#include <QDialog>
#include <functional>
#include <optional>

class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace dxfimport {

class Drawing;
class ZoomState;

// The layer dialog: one grid row per layer (name with its padding, colour as a decimal RGB
// number with a swatch of it, "On" or "Off" chosen from a drop-down placed over the cell),
// sorted by name on a click of its header and narrowed to the names holding a typed text,
// a colour for the current layer, and the choice between entity and layer colours. Apply and OK write the
// grid back to the layer table and ask for a redraw when something changed.
class frmLayer : public QDialog {
 public:
  static constexpr int kMaxLayers = 2000;

  // Opens the dialog for the drawing, modal over `owner`, after the checks on the layer
  // count (messages 1046 and 1047). `redraw` draws the picture again.
  static void Open(QWidget* owner, Drawing& drawing, ZoomState& zoom, std::function<void()> redraw,
                   std::function<std::optional<QColor>(QColor)> chooseColor = {});

  frmLayer(QWidget* owner, Drawing& drawing, ZoomState& zoom, std::function<void()> redraw);

  // The colour dialog, replaceable (tests): the chosen colour, or nothing when cancelled.
  std::function<std::optional<QColor>(QColor)> ChooseColor;

  void cmdClose_Click(int index);  // 0 Apply, 1 OK
  void cmdColor_Click();
  void Option1_Click(int index);
  void grdLayer_SelChange();
  void cboOnOff_LostFocus();
  void SetLayerState();
  void FilterRows(const QString& text);

  QTableWidget* grid() const { return grdLayer_; }
  QLineEdit* filter() const { return filter_; }
  QComboBox* onOff() const { return cboOnOff_; }
  bool dirty() const { return dirty_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void FillGrid();

  Drawing& drawing_;
  ZoomState& zoom_;
  std::function<void()> redraw_;
  bool active_ = false;
  bool dirty_ = false;
  QTableWidget* grdLayer_ = nullptr;
  QComboBox* cboOnOff_ = nullptr;
  QPushButton* cmdColor_ = nullptr;
  QRadioButton* option1_[2] = {nullptr, nullptr};
  QLineEdit* filter_ = nullptr;
  Qt::SortOrder sortOrder_ = Qt::DescendingOrder;  // the first click sorts ascending
};

}  // namespace dxfimport
