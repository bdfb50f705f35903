#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollArea>
#include <QSettings>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <cmath>

#include "app/viewer_factory.h"
#include "layers/layer_dialog.h"
#include "support/messages.h"
#include "testing/viewer_session.h"
#include "support/texts.h"
#include "viewer/main_window.h"
#include "viewer/picture_box.h"

using namespace dxfimport;

namespace {

const std::string kSample = DXFIMPORT_SAMPLES_DIR "/floorplan.dxf";

void Wheel(QWidget* target, QPoint at, int notches) {
  QWheelEvent event(QPointF(at), QPointF(target->mapToGlobal(at)), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(target, &event);
}

double Width(const ZoomRect& r) { return r.right - r.left; }

// The pointer moved over a widget with no button held.
void Hover(QWidget* target, QPoint at) {
  QMouseEvent event(QEvent::MouseMove, QPointF(at), QPointF(target->mapToGlobal(at)), Qt::NoButton, Qt::NoButton,
                    Qt::NoModifier);
  QApplication::sendEvent(target, &event);
}

}  // namespace

class NavigationTest : public QObject {
  Q_OBJECT

 private:
  testing::ViewerSession session_;
  RecordingMessageSink& messages_ = session_.messages;

  // The sample open in a shown window of 1200 x 850 whose picture follows it.
  std::unique_ptr<frmImport> ShownSample() {
    auto w = MakeViewer(false);
    w->SetFollowWindow(true);
    w->resize(1200, 850);
    w->show();
    // The picture follows once the resizing has stopped (later on a busy machine).
    if (!QTest::qWaitFor([&w] { return w->Picture1()->image().size() == w->Picture1()->parentWidget()->size(); }))
      qWarning("the picture did not follow the window");
    gstrDXFFileName = kSample;
    w->FileOpen(false);
    return w;
  }

 private slots:
  void initTestCase() { session_.Begin(); }
  void cleanupTestCase() { session_.End(); }

  void thePictureFollowsTheWindowUntilASizeIsChosen() {
    auto w = ShownSample();
    auto* area = w->findChild<QScrollArea*>("vsViewPort1");
    QCOMPARE(w->Picture1()->image().size(), area->viewport()->size());
    QVERIFY(area->viewport()->width() > 1100);
    QCOMPARE(w->CurrentPicture().size(), area->viewport()->size());  // what is saved and copied
    w->resize(900, 700);
    QTRY_COMPARE(w->Picture1()->image().size(), area->viewport()->size());
    // A size chosen in the dialog holds, whatever the window does, and is kept.
    w->ChoosePictureSize(800, 600);
    QVERIFY(!w->followsWindow());
    w->resize(1300, 900);
    QTest::qWait(150);
    QCOMPARE(w->CurrentPicture().size(), QSize(800, 600));
    QVERIFY(!MakeViewer(false)->followsWindow());
    w->Action("mnuOptionFollow")->setChecked(true);
    QVERIFY(w->followsWindow());
    QCOMPARE(w->Picture1()->image().size(), area->viewport()->size());
    QVERIFY(MakeViewer(false)->followsWindow());
  }

  void theWheelZoomsAboutThePointerAndTheMiddleButtonDragsTheView() {
    auto w = ShownSample();
    PictureBox* picture = w->Picture1();
    const QPoint at(300, 200);
    const PointD under = w->zoom().DrawingPoint(at.x(), at.y());
    const double before = Width(w->zoom().CurrentZoom());
    Wheel(picture, at, 3);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - before / (1.25 * 1.25 * 1.25)) < before * 1e-9);
    const PointD still = w->zoom().DrawingPoint(at.x(), at.y());
    QVERIFY(qAbs(still.x - under.x) < 1e-9 * before && qAbs(still.y - under.y) < 1e-9 * before);
    Wheel(picture, at, -3);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - before) < before * 1e-9);

    // A middle-button drag of (50, 20) pixels: the drawing follows the hand.
    const ZoomRect start = w->zoom().CurrentZoom();
    const double scale = w->zoom().Engine.ViewScale;
    QTest::mousePress(picture, Qt::MiddleButton, {}, QPoint(400, 300));
    QTest::mouseMove(picture, QPoint(430, 310));
    QTest::mouseMove(picture, QPoint(450, 320));
    QTest::mouseRelease(picture, Qt::MiddleButton, {}, QPoint(450, 320));
    QCOMPARE(picture->panOffset(), QPoint());
    QVERIFY(qAbs(w->zoom().CurrentZoom().left - (start.left - 50 / scale)) < 1e-6 / scale);
    QVERIFY(qAbs(w->zoom().CurrentZoom().top - (start.top + 20 / scale)) < 1e-6 / scale);
    // Back, view by view; a middle double click shows the extents.
    w->PreviousView();
    QVERIFY(qAbs(w->zoom().CurrentZoom().left - start.left) < 1e-6 / scale);
    Wheel(picture, at, 2);
    QTest::mouseDClick(picture, Qt::MiddleButton, {}, at);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - before) < before * 1e-6);
  }

  void theStatusBarShowsThePointersCoordinatesAndTheZoom() {
    auto w = ShownSample();
    Hover(w->Picture1(), QPoint(100, 100));
    const PointD p = w->zoom().DrawingPoint(100, 100);
    const int decimals = int(std::ceil(std::log10(w->zoom().Engine.ViewScale)));  // a pixel's worth
    const QString text = w->coordinatesText();
    QVERIFY2(text.startsWith(QString("X: %1   Y: %2").arg(p.x, 0, 'f', decimals).arg(p.y, 0, 'f', decimals)),
             qPrintable(text));
    QVERIFY2(text.endsWith("Zoom: 100 %"), qPrintable(text));
    Wheel(w->Picture1(), QPoint(100, 100), 10);  // 1.25^10: about 931 %, a pixel worth a decimal more
    Hover(w->Picture1(), QPoint(101, 100));
    QVERIFY2(w->coordinatesText().endsWith("Zoom: 931 %"), qPrintable(w->coordinatesText()));
    const PointD q = w->zoom().DrawingPoint(101, 100);
    QVERIFY(w->coordinatesText().startsWith(QString("X: %1").arg(q.x, 0, 'f', decimals + 1)));
  }

  void shortcutsRecentFilesAndADroppedFile() {
    auto w = ShownSample();
    QApplication::setActiveWindow(w.get());
    QVERIFY(QTest::qWaitForWindowActive(w.get()));
    const double full = Width(w->zoom().CurrentZoom());
    QTest::keyClick(w.get(), Qt::Key_Plus);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - full / 2) < full * 1e-9);
    QTest::keyClick(w.get(), Qt::Key_Backspace);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - full) < full * 1e-9);
    QTest::keyClick(w.get(), Qt::Key_Plus);
    QTest::keyClick(w.get(), Qt::Key_Home);
    QVERIFY(qAbs(Width(w->zoom().CurrentZoom()) - full) < full * 1e-6);
    bool asked = false;
    w->ChooseOpenFile = [&asked] {
      asked = true;
      return QString();
    };
    QTest::keyClick(w.get(), Qt::Key_O, Qt::ControlModifier);
    QVERIFY(asked);
    QCOMPARE(w->recentFiles().value(0), QFileInfo(QString::fromStdString(kSample)).absoluteFilePath());

    // A file dropped on the window opens; it comes first among the recent files.
    QTemporaryDir dir;
    const QString copy = dir.filePath("dropped.dxf");
    QVERIFY(QFile::copy(QString::fromStdString(kSample), copy));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(copy)});
    QDragEnterEvent enter(QPoint(200, 200), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(w.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(200, 200), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(w.get(), &drop);
    QTRY_COMPARE(QString::fromStdString(gstrDXFFileName), copy);
    QVERIFY(w->booPictureLoaded);
    QCOMPARE(w->recentFiles().value(0), copy);
    QCOMPARE(MakeViewer(false)->recentFiles().value(0), copy);  // kept between runs
  }

  void theLayerDialogShowsSwatchesSortsAndFilters() {
    auto w = ShownSample();
    frmLayer dialog(w.get(), w->drawing(), w->zoom(), [&w] { w->RedrawPicture(); });
    dialog.show();
    QTableWidget* grid = dialog.grid();
    const QImage swatch = grid->item(2, 1)->icon().pixmap(14, 14).toImage();
    QCOMPARE(swatch.pixelColor(7, 7), QColor(255, 0, 0));  // 255: red
    dialog.filter()->setText("wall");
    int shown = 0;
    for (int i = 0; i < grid->rowCount(); ++i) shown += !grid->isRowHidden(i);
    QCOMPARE(shown, 1);
    dialog.filter()->clear();
    // Sorted by name, an edit still goes to its own layer.
    QTest::mouseClick(grid->horizontalHeader()->viewport(), Qt::LeftButton, {},
                      grid->horizontalHeader()->sectionViewportPosition(0) == 0 ? QPoint(10, 5) : QPoint(10, 5));
    QVERIFY(grid->item(0, 0)->text() <= grid->item(1, 0)->text());
    int network = -1;
    for (int i = 0; i < grid->rowCount(); ++i)
      if (grid->item(i, 0)->text().startsWith("NETWORK")) network = i;
    QVERIFY(network >= 0);
    grid->item(network, 2)->setText("Off");
    dialog.cmdClose_Click(0);
    QCOMPARE(w->drawing().Layers[6].IsOn, 0);  // NETWORK is the seventh layer of the file
  }
};

QTEST_MAIN(NavigationTest)
#include "navigation_test.moc"
