#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollArea>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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

void Wheel(QWidget* target, QPoint at, int notches) {
  QWheelEvent event(QPointF(at), QPointF(target->mapToGlobal(at)), QPoint(), QPoint(0, 120 * notches),
                    Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(target, &event);
}

double Width(const ZoomRect& r) { return r.right - r.left; }

// The pointer moved over a widget with no button held.
void Hover(QWidget* target, QPoint at) {
  QMouseEvent event(QEvent::MouseMove, QPointF(at), QPointF(target->mapToGlobal(at)), Qt::NoButton,
                    Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(target, &event);
}

// Keeps the log lines written while it lives.
class LogLines : public LogSink {
 public:
  LogLines() : previous_(SetLogSink(this)) {}
  ~LogLines() override { SetLogSink(previous_); }
  void Write(int, std::string_view text) override { lines.emplace_back(text); }
  bool Contains(std::string_view fragment) const {
    for (const std::string& line : lines)
      if (line.find(fragment) != std::string::npos) return true;
    return false;
  }
  std::vector<std::string> lines;

 private:
  LogSink* previous_;
};

// A drawing whose redraw takes long enough to let window messages run in between: 400,000
// lines scattered over 1,000 by 1,000 units.
std::string LargeDrawing(const QTemporaryDir& dir) {
  const std::string path = dir.filePath("large.dxf").toStdString();
  std::ofstream out(path);
  out << "0\nSECTION\n2\nENTITIES\n";
  for (int64_t i = 0; i < 400000; ++i) {
    const int64_t x = (i * 7919) % 1000, y = (i * 104729 / 1000) % 1000;
    out << "0\nLINE\n8\n"
        << i % 7 << "\n10\n"
        << x << "\n20\n"
        << y << "\n11\n"
        << x + 30 << "\n21\n"
        << y + 20 << "\n";
  }
  out << "0\nENDSEC\n0\nEOF\n";
  return path;
}

// Runs `during` once, at the first point where a redraw lets window messages run.
void DuringNextRedraw(frmImport& w, std::function<void()> during) {
  auto once = std::make_shared<std::function<void()>>(std::move(during));
  w.zoom().KeepDrawing = [keep = w.zoom().KeepDrawing, once] {
    if (*once) std::exchange(*once, nullptr)();
    return keep();
  };
}

}  // namespace

class NavigationTest : public QObject {
  Q_OBJECT

 private:
  testing::ViewerSession session_;
  RecordingMessageSink& messages_ = session_.messages;

  // A drawing open in a shown window of 1200 x 850 whose picture follows it.
  std::unique_ptr<frmImport> Shown(const std::string& file, bool smooth = false) {
    auto w = MakeViewer(false);
    w->SetFollowWindow(true);
    w->resize(1200, 850);
    w->show();
    // The picture follows once the resizing has stopped (later on a busy machine).
    if (!QTest::qWaitFor(
            [&w] { return w->Picture1()->image().size() == w->Picture1()->parentWidget()->size(); }))
      qWarning("the picture did not follow the window");
    w->zoom().Display.Antialias = smooth;
    gstrDXFFileName = file;
    w->FileOpen(false);
    return w;
  }
  std::unique_ptr<frmImport> ShownSample() { return Shown(kSample); }

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

  // The large drawing in a shown window, with smooth lines.
  std::unique_ptr<frmImport> ShownLarge(const QTemporaryDir& dir) { return Shown(LargeDrawing(dir), true); }

  // A drag whose button is released while the redraw of its first move runs: the drag
  // ends, the redraw under way stops, and the view the drag came to is drawn after it,
  // by one redraw at a time.
  void aDragReleasedDuringARedrawEndsAndItsViewIsDrawnNext() {
    QTemporaryDir dir;
    auto w = ShownLarge(dir);
    LogLines log;
    PictureBox* picture = w->Picture1();
    const ZoomRect start = w->zoom().CurrentZoom();
    const double scale = w->zoom().Engine.ViewScale;
    bool duringRedraw = false;
    QTest::mousePress(picture, Qt::MiddleButton, {}, QPoint(400, 300));
    DuringNextRedraw(*w, [&] {
      duringRedraw = w->zoom().InProgress();
      QTest::mouseMove(picture, QPoint(440, 310));
      QTest::mouseRelease(picture, Qt::MiddleButton, {}, QPoint(450, 320));
      QVERIFY(!w->dragging());
    });
    QTest::mouseMove(picture, QPoint(420, 300));  // its view is drawn at the next turn of the event loop
    QVERIFY(QTest::qWaitFor([&] { return duringRedraw && !w->Busy(); }));
    QTest::qWait(0);
    QVERIFY(duringRedraw);
    QVERIFY(!w->dragging());
    QCOMPARE(picture->panOffset(), QPoint());
    QVERIFY(!log.Contains("while one ran"));
    const ZoomRect end = w->zoom().CurrentZoom();
    QVERIFY(qAbs(end.left - (start.left - 50 / scale)) < 1e-6 / scale);
    QVERIFY(qAbs(end.top - (start.top + 20 / scale)) < 1e-6 / scale);
    // Moves with no button held after the release pan nothing.
    Hover(picture, QPoint(600, 500));
    QTest::qWait(0);
    QVERIFY(qAbs(w->zoom().CurrentZoom().left - end.left) < 1e-9 / scale);
  }

  // Wheel notches while a redraw runs zoom the view that waits to be drawn: two notches
  // make one view, drawn once the running redraw has stopped.
  void wheelNotchesDuringARedrawMergeIntoOneView() {
    QTemporaryDir dir;
    auto w = ShownLarge(dir);
    LogLines log;
    PictureBox* picture = w->Picture1();
    ZoomRect drawing{};
    PointD under{};
    bool duringRedraw = false;
    QTest::mousePress(picture, Qt::MiddleButton, {}, QPoint(400, 300));
    DuringNextRedraw(*w, [&] {
      duringRedraw = w->zoom().InProgress();
      drawing = w->zoom().CurrentZoom();
      under = w->zoom().DrawingPoint(300, 200);
      QTest::mouseRelease(picture, Qt::MiddleButton, {}, QPoint(410, 300));
      Wheel(picture, QPoint(300, 200), 1);
      Wheel(picture, QPoint(300, 200), 1);
    });
    QTest::mouseMove(picture, QPoint(410, 300));
    QVERIFY(QTest::qWaitFor([&] { return duringRedraw && !w->Busy(); }));
    QTest::qWait(0);
    QVERIFY(!log.Contains("while one ran"));
    const ZoomRect end = w->zoom().CurrentZoom();
    QVERIFY(qAbs(Width(end) - Width(drawing) / (1.25 * 1.25)) < Width(drawing) * 1e-9);
    const PointD still = w->zoom().DrawingPoint(300, 200);
    QVERIFY(qAbs(still.x - under.x) < 1e-6 * Width(drawing) &&
            qAbs(still.y - under.y) < 1e-6 * Width(drawing));
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
    QTest::mouseClick(
        grid->horizontalHeader()->viewport(), Qt::LeftButton, {},
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
