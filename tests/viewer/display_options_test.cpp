#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

#include "app/viewer_factory.h"
#include "layers/layer_dialog.h"
#include "support/log.h"
#include "support/messages.h"
#include "support/texts.h"
#include "testing/viewer_session.h"
#include "viewer/main_window.h"
#include "viewer/picture_box.h"

using namespace dxfimport;

namespace {

const std::string kSample = DXFIMPORT_SAMPLES_DIR "/floorplan.dxf";

int CountColor(const QImage& image, QRgb color) {
  int n = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) n += (image.pixel(x, y) & 0xFFFFFF) == (color & 0xFFFFFF);
  return n;
}

float WindowWidth(frmImport& w) { return w.zoom().CurrentZoom().right - w.zoom().CurrentZoom().left; }

class RecordingLog : public LogSink {
 public:
  void Write(int, std::string_view text) override { lines.emplace_back(text); }
  std::vector<std::string> lines;
};

// Closes the modal dialog that opens next, whenever it is up (`opened` says it was);
// polling stops with the returned timer.
std::unique_ptr<QTimer> CloseModalWhenOpen(bool* opened = nullptr) {
  auto poll = std::make_unique<QTimer>();
  QTimer* timer = poll.get();
  QObject::connect(timer, &QTimer::timeout, [timer, opened] {
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal) return;
    timer->stop();
    if (opened) *opened = true;
    modal->close();
  });
  timer->start(10);
  return poll;
}

}  // namespace

class DisplayOptionsTest : public QObject {
  Q_OBJECT

 private:
  testing::ViewerSession session_;
  RecordingMessageSink& messages_ = session_.messages;

  std::unique_ptr<frmImport> OpenSample() {
    auto window = MakeViewer(false);
    gstrDXFFileName = kSample;
    window->FileOpen(false);
    return window;
  }

 private slots:
  void initTestCase() { session_.Begin(); }
  void cleanupTestCase() { session_.End(); }
  void init() { messages_.clear(); }

  void aClickZoomsInTwiceAndADragOfFifteenPixelsZoomsToTheRectangle() {
    auto w = OpenSample();
    PictureBox* picture = w->Picture1();
    const float full = WindowWidth(*w);
    QTest::mouseClick(picture, Qt::LeftButton, {}, QPoint(100, 100));  // not armed: nothing
    QCOMPARE(WindowWidth(*w), full);

    w->mnuZoomPlus_Click();
    QTest::mousePress(picture, Qt::LeftButton, {}, QPoint(100, 100));
    QTest::mouseMove(picture, QPoint(114, 300));
    QTest::mouseRelease(picture, Qt::LeftButton, {}, QPoint(114, 300));  // 14 across: a click
    QVERIFY(qAbs(WindowWidth(*w) - full / 2) < full * 1e-4);
    QVERIFY(!w->ToolbarButton("MagPlus")->isChecked());

    const float before = WindowWidth(*w);
    const float scale = w->zoom().Engine.ViewScale;
    w->mnuZoomPlus_Click();
    QTest::mousePress(picture, Qt::LeftButton, {}, QPoint(200, 200));
    QTest::mouseMove(picture, QPoint(215, 215));
    QTest::mouseRelease(picture, Qt::LeftButton, {}, QPoint(215, 215));  // exactly 15 by 15: a rectangle
    QVERIFY(WindowWidth(*w) < before / 10);
    QVERIFY(qAbs(WindowWidth(*w) - 20 / scale) < 1e-3 * before);  // 15 high, widened to 4:3
    // The rubber band is drawn over the picture, never into it.
    w->mnuZoomReset_Click();
    QImage clean = picture->image();
    w->mnuZoomPlus_Click();
    QTest::mousePress(picture, Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseMove(picture, QPoint(300, 300));
    QCOMPARE(picture->image(), clean);
    QCOMPARE(w->CurrentPicture(), clean);
    QTest::mouseRelease(picture, Qt::LeftButton, {}, QPoint(300, 300));
  }

  void theLayerDialogWritesBackOnApplyAndRedrawsOnlyAfterAChange() {
    auto w = OpenSample();
    frmLayer dialog(w.get(), w->drawing(), w->zoom(), [&w] { w->RedrawPicture(); });
    dialog.show();
    QTableWidget* grid = dialog.grid();
    QCOMPARE(grid->rowCount(), 9);
    QCOMPARE(grid->item(1, 0)->text(), QString("WALLS               "));  // with its padding
    QCOMPARE(grid->item(2, 1)->text(), QString("255"));
    const int redraws = w->redrawCount();
    dialog.cmdClose_Click(0);  // nothing changed: no redraw
    QCOMPARE(w->redrawCount(), redraws);

    const int magentaBefore = CountColor(w->Picture1()->image(), qRgb(255, 0, 255));
    QVERIFY(magentaBefore > 50);
    grid->setCurrentCell(6, 2);  // NETWORK, On/Off: the drop-down comes over the cell
    QVERIFY(dialog.onOff()->isVisible());
    dialog.onOff()->setCurrentText("Off");
    dialog.cboOnOff_LostFocus();
    dialog.cmdClose_Click(0);
    QCOMPARE(w->redrawCount(), redraws + 1);
    QCOMPARE(w->drawing().Layers[6].IsOn, 0);
    QCOMPARE(CountColor(w->Picture1()->image(), qRgb(255, 0, 255)), 0);

    grid->item(6, 2)->setText("ON");
    grid->item(7, 2)->setText("on");
    dialog.cmdClose_Click(0);
    QCOMPARE(w->drawing().Layers[6].IsOn, -1);
    QCOMPARE(w->drawing().Layers[7].IsOn, -1);

    dialog.ChooseColor = [](QColor) { return std::optional<QColor>(); };  // cancelled
    grid->setCurrentCell(2, 0);
    dialog.cmdColor_Click();
    QCOMPARE(grid->item(2, 1)->text(), QString("255"));
    QVERIFY(!dialog.dirty());
    dialog.ChooseColor = [](QColor) { return std::optional<QColor>(QColor(0, 0, 255)); };
    dialog.cmdColor_Click();
    QCOMPARE(grid->item(2, 1)->text(), QString::number(0xFF0000));
    QVERIFY(dialog.dirty());
    dialog.cmdClose_Click(1);
    QCOMPARE(w->drawing().Layers[2].Color, 0xFF0000);
    QVERIFY(!dialog.isVisible());
  }

  void theLayerDialogRefusesDrawingsWithoutLayersOrWithTooMany() {
    RecordingLog log;
    LogSink* previousLog = SetLogSink(&log);
    Drawing drawing;
    ZoomState zoom(drawing);
    frmLayer::Open(nullptr, drawing, zoom, {});
    QCOMPARE(messages_.messages().back().text, LoadResText(1046));
    for (int i = 0; i < 2001; ++i) drawing.AddLayer({"L" + std::to_string(i), 0, -1, 0});
    frmLayer::Open(nullptr, drawing, zoom, {});
    QCOMPARE(messages_.messages().back().text, LoadResText(1047));
    QVERIFY(log.lines.back().find("Cannot edit layers: layer count > 2000") != std::string::npos);
    drawing.Layers.pop_back();
    bool opened = false;
    {
      auto closer = CloseModalWhenOpen(&opened);
      frmLayer::Open(nullptr, drawing, zoom, {});
    }
    QVERIFY(opened);  // exactly 2000 layers open
    SetLogSink(previousLog);
  }

  void colourDepthBackgroundAndTheOptionsMenu() {
    auto idle = MakeViewer(false);
    idle->mnuZoom_Click();
    QVERIFY(!idle->Action("mnuZoomPlus")->isEnabled());
    QVERIFY(!idle->Action("mnuZoomReset")->isEnabled());
    idle->mnuoptions_Click();
    QVERIFY(!idle->Action("mnuOptionForecolor")->isEnabled());
    QVERIFY(!idle->Action("mnuOptionProperties")->isEnabled());
    QVERIFY(!idle->Action("mnuOptionReduce")->isEnabled());
    QVERIFY(idle->Action("mnuOptionColor")->isEnabled());

    auto w = OpenSample();
    w->mnuZoom_Click();
    QVERIFY(w->Action("mnuZoomMinus")->isEnabled());
    w->mnuOptionReduceChoice_Click(1);
    QVERIFY(w->booGear1Visible());
    QCOMPARE(w->CurrentPicture().colorCount(), 16);
    {
      auto closer = CloseModalWhenOpen();
      w->mnuOptionSize_Click();
    }
    QVERIFY(!w->booGear1Visible());
    w->mnuoptions_Click();
    QVERIFY(w->Action("mnuOptionReduceChoice3")->isChecked());
    QVERIFY(!w->Action("mnuOptionReduceChoice1")->isChecked());

    const int redraws = w->redrawCount();
    w->ChooseColor = [](QColor current) { return std::optional<QColor>(current); };
    w->mnuOptionColor_Click();
    QCOMPARE(w->redrawCount(), redraws);  // the same colour: no redraw
    w->ChooseColor = [](QColor) { return std::optional<QColor>(QColor(Qt::black)); };
    w->mnuOptionColor_Click();
    QCOMPARE(w->redrawCount(), redraws + 1);
    QCOMPARE(w->Picture1()->image().pixel(0, 0) & 0xFFFFFF, 0u);
  }

  void theLegacyReadingRulesAreAPersistedChoiceForTheNextFile() {
    auto w = MakeViewer(false);
    QCOMPARE(w->readingProfile(), ReadingProfile::Modern);
    QAction* legacy = w->Action("mnuOptionLegacy");
    QCOMPARE(legacy->text(), QString("Le&gacy Reading Rules"));
    legacy->setChecked(true);
    QCOMPARE(w->readingProfile(), ReadingProfile::Legacy);
    auto again = MakeViewer(false);
    QCOMPARE(again->readingProfile(), ReadingProfile::Legacy);
    legacy->setChecked(false);
    QCOMPARE(MakeViewer(false)->readingProfile(), ReadingProfile::Modern);
  }
};

QTEST_MAIN(DisplayOptionsTest)
#include "display_options_test.moc"
