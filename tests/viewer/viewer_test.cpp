#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRawFont>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTextLayout>
#include <QTimer>
#include <filesystem>
#include <fstream>

#include "app/dxf_class.h"
#include "render/world_file.h"
#include "support/messages.h"
#include "support/shared_settings.h"
#include "support/texts.h"
#include "testing/viewer_session.h"
#include "viewer/background_look_dialog.h"
#include "viewer/choose_size_dialog.h"
#include "viewer/main_window.h"
#include "viewer/picture_box.h"

using namespace dxfimport;

namespace {

const std::string kSample = DXFIMPORT_SAMPLES_DIR "/floorplan.dxf";

int InkedPixels(const QImage& image) {
  int n = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) n += (image.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF;
  return n;
}

// Glyphs of `text` in `font` (with the fallback faces the text system chooses) that no
// face has: drawn as the missing-glyph box.
int MissingGlyphs(const QString& text, const QFont& font) {
  QTextLayout layout(text, font);
  layout.beginLayout();
  layout.createLine();
  layout.endLayout();
  int missing = 0;
  for (const QGlyphRun& run : layout.glyphRuns())
    for (quint32 glyph : run.glyphIndexes()) missing += glyph == 0;
  return missing;
}

// Runs `step` once the event loop is running (after a modal dialog or viewer has opened).
// Runs `step` on the host's window once it is shown, loaded and waiting for the user (a
// step taken while the window still loads would be lost, and the dialog wait for ever).
void WhenShown(DXF& host, std::function<void(frmImport&)> step) {
  auto* poll = new QTimer;
  QObject::connect(poll, &QTimer::timeout, [poll, &host, step] {
    frmImport* window = host.window();
    if (!window || !window->isVisible() || window->Busy()) return;
    poll->stop();
    poll->deleteLater();
    step(*window);
  });
  poll->start(10);
}

}  // namespace

class ViewerTest : public QObject {
  Q_OBJECT

 private:
  testing::ViewerSession session_;
  RecordingMessageSink& messages_ = session_.messages;

 private slots:
  void initTestCase() { session_.Begin(); }
  void cleanupTestCase() { session_.End(); }
  void init() { messages_.clear(); }

  void openingTheSampleShowsItAndEnablesTheCommands() {
    frmImport window(false);
    QVERIFY(!window.ToolbarButton("MagPlus")->isEnabled());
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    QVERIFY(window.booPictureLoaded);
    QCOMPARE(window.windowTitle(), QString::fromStdString("Corvath DXF Import [" + kSample + "]"));
    for (const char* key : {"MagNormal", "MagPlus", "MagMinus", "Open", "Resize"})
      QVERIFY(window.ToolbarButton(key)->isEnabled());
    QVERIFY(window.ToolbarButton("MagPlus")->toolTip() == "Zoom in");
    window.mnuFile_Click();
    QVERIFY(window.Action("mnuFileSaveAsBitmap")->isEnabled());
    QCOMPARE(window.Picture1()->image().size(), QSize(640, 480));
    QVERIFY(InkedPixels(window.Picture1()->image()) > 1000);
    QVERIFY(!window.ProgressBar1()->isVisible());
    QVERIFY(messages_.messages().empty());
    QCOMPARE(window.Action("mnuOptionReduce")->text(), QString("Color &Depth"));
  }

  void aCancelledOpenLeavesNothingOpen() {
    frmImport window(false);
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    window.ChooseOpenFile = [] { return QString(); };
    window.FileOpen(true);
    QVERIFY(!window.booPictureLoaded);
    QCOMPARE(window.windowTitle(), QString("Corvath DXF Import"));
    QVERIFY(!window.ToolbarButton("MagNormal")->isEnabled());
    QCOMPARE(InkedPixels(window.Picture1()->image()), 0);
    window.mnuFile_Click();
    QVERIFY(!window.Action("mnuFileSaveAsBitmap")->isEnabled());
    QVERIFY(messages_.messages().empty());
  }

  void badFilesShowTheSystemsMessageAndLeaveNothingOpen() {
    QTemporaryDir dir;
    const std::string notDxf = dir.filePath("note.dxf").toStdString();
    std::ofstream(notDxf) << "hello\n";
    const std::string cut = dir.filePath("cut.dxf").toStdString();
    std::ofstream(cut) << "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n";
    struct Case {
      std::string file;
      const char* message;
    };
    for (const Case& c :
         {Case{"/nonexistent/x.dxf", "Error 53: File not found"}, Case{dir.path().toStdString(), "Error 75"},
          Case{notDxf, "not recognized as a valid DXF file"}}) {
      messages_.clear();
      frmImport window(false);
      gstrDXFFileName = c.file;
      window.FileOpen(false);
      QVERIFY(!window.booPictureLoaded);
      QCOMPARE(window.windowTitle(), QString("Corvath DXF Import"));
      QCOMPARE(messages_.messages().size(), std::size_t(1));
      QVERIFY2(messages_.messages()[0].text.find(c.message) != std::string::npos,
               messages_.messages()[0].text.c_str());
    }
    messages_.clear();
    frmImport window(false);
    gstrDXFFileName = cut;
    window.FileOpen(false);  // a broken file: reported, what was read is kept
    QVERIFY(!messages_.messages().empty());
  }

  void saveAsBitmapWritesThePictureAndNothingWhenItCannot() {
    QTemporaryDir dir;
    frmImport window(false);
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    const QString file = dir.filePath("picture.bmp");
    window.ChooseSaveFile = [file] { return file; };
    window.mnuFileSaveAsBitmap_Click();
    QImage saved(file);
    QCOMPARE(saved.convertToFormat(QImage::Format_RGB32),
             window.Picture1()->image().convertToFormat(QImage::Format_RGB32));
    // PNG and TIFF by the name chosen, through the same writer as the command line.
    for (const char* name : {"picture.png", "picture.tif"}) {
      const QString other = dir.filePath(name);
      window.ChooseSaveFile = [other] { return other; };
      window.mnuFileSaveAsBitmap_Click();
      QCOMPARE(QImage(other).convertToFormat(QImage::Format_RGB32),
               window.Picture1()->image().convertToFormat(QImage::Format_RGB32));
    }
    window.ChooseSaveFile = [] { return QString(); };
    window.mnuFileSaveAsBitmap_Click();  // cancelled: nothing
    QVERIFY(messages_.messages().empty());
    const QString unwritable = dir.filePath("missing/folder/picture.bmp");
    window.ChooseSaveFile = [unwritable] { return unwritable; };
    window.mnuFileSaveAsBitmap_Click();
    QCOMPARE(messages_.messages().size(), std::size_t(1));
    QVERIFY(!QFile::exists(unwritable));
    window.mnuEditCopy_Click();
    QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(640, 480));
  }

  void theSizeDialogPreselectsByWidthFirst() {
    struct Case {
      int width, height, option;
    };
    for (const Case& c : {Case{640, 480, 0}, Case{800, 600, 1}, Case{1024, 768, 2}, Case{1152, 864, 3},
                          Case{480, 640, 4}, Case{600, 800, 5}, Case{768, 1024, 6}, Case{864, 1152, -1},
                          Case{1024, 1152, 7}, Case{1024, 600, -1}, Case{333, 444, -1}})
      QCOMPARE(frmChooseSize::PreselectedOption(c.width, c.height), c.option);
    frmImport window(false);
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    {
      frmChooseSize dialog(window);
      QCOMPARE(dialog.SelectedOption(), 0);
      dialog.SelectOption(7);
      dialog.cmd1_Click(0);
    }
    QCOMPARE(window.Picture1()->image().size(), QSize(864, 1152));
    QVERIFY(InkedPixels(window.Picture1()->image()) > 1000);
    frmChooseSize again(window);
    QCOMPARE(again.SelectedOption(), -1);  // 864 x 1152 pre-selects nothing, as it always did
    again.cmd1_Click(2);
    QCOMPARE(messages_.messages().back().text, std::string("help"));

    // A scale and a resolution: the extents at 1:N and so many dots per inch, the unit
    // chosen when the drawing does not say; the saved bitmap carries the resolution.
    const Drawing& d = window.drawing();
    frmChooseSize scaled(window);
    scaled.findChild<QSpinBox*>("txtScale")->setValue(50);
    scaled.findChild<QSpinBox*>("txtDpi")->setValue(150);
    auto* units = scaled.findChild<QComboBox*>("cboUnits");
    QCOMPARE(units->isEnabled(), d.InsUnits == 0);
    units->setCurrentText("m");
    QCOMPARE(scaled.SelectedOption(), frmChooseSize::kScaleOption);
    const double perUnit = 150 / 25.4 * (d.InsUnits == 0 ? 1000 : MillimetresPerUnit(d.InsUnits)) / 50;
    const QSize expected(int(std::ceil((d.ExtMaxX - d.ExtMinX) * perUnit - 1e-6)),
                         int(std::ceil((d.ExtMaxY - d.ExtMinY) * perUnit - 1e-6)));
    QCOMPARE(scaled.ScaledSize(), expected);
    QVERIFY(scaled.findChild<QLabel*>("lblScaledSize")->text().contains(QString::number(expected.width())));
    scaled.cmd1_Click(0);
    QCOMPARE(window.Picture1()->image().size(), expected);
    QCOMPARE(window.CurrentPicture().dotsPerMeterX(), qRound(150 / 0.0254));
    // Too large for the viewer: said, and nothing changes.
    scaled.findChild<QSpinBox*>("txtScale")->setValue(1);
    scaled.findChild<QSpinBox*>("txtDpi")->setValue(2400);
    scaled.cmd1_Click(0);
    QVERIFY(messages_.messages().back().text.find("dxfimport render") != std::string::npos);
    QCOMPARE(window.Picture1()->image().size(), expected);
  }

  // Options > Background Look: every ink blue (white and blue mixed at smoothed edges),
  // kept for the next window and for the host class; Cancel changes nothing.
  void theBackgroundLookIsKeptAndDrawn() {
    frmImport window(false);
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    {
      frmBackgroundLook dialog(window);
      dialog.fade()->setValue(40);
      dialog.reject();
    }
    QCOMPARE(window.zoom().Display.Fade, 0);
    {
      frmBackgroundLook dialog(window);
      dialog.monochrome()->setChecked(true);
      dialog.color()->setCurrentText("#0000ff");
      dialog.accept();
    }
    QCOMPARE(window.zoom().Display.Monochrome, 0xFF0000);
    const QImage picture = window.Picture1()->image().convertToFormat(QImage::Format_RGB32);
    int blue = 0, other = 0;
    for (int y = 0; y < picture.height(); ++y)
      for (int x = 0; x < picture.width(); ++x) {
        const QRgb c = picture.pixel(x, y);
        if (c == qRgb(255, 255, 255)) continue;
        (qRed(c) == qGreen(c) && qBlue(c) == 255 ? blue : other) += 1;
      }
    QVERIFY(blue > 1000);
    QCOMPARE(other, 0);
    // Saved on a transparent background: PNG with alpha 0 where nothing is drawn.
    {
      frmBackgroundLook dialog(window);
      dialog.transparent()->setChecked(true);
      dialog.accept();
    }
    QTemporaryDir dir;
    const QString png = dir.filePath("clear.png");
    QVERIFY(window.WriteCurrentPicture(png.toStdString()));
    const QImage clear = QImage(png).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(qAlpha(clear.pixel(0, 0)), 0);
    int opaque = 0;
    for (int y = 0; y < clear.height(); ++y)
      for (int x = 0; x < clear.width(); ++x) opaque += qAlpha(clear.pixel(x, y)) == 255;
    QVERIFY(opaque > 1000);
    DXF host;
    QCOMPARE(host.strMonochrome(), std::string("#0000ff"));
    QVERIFY(host.booTransparentBackground());
    host.intFade(30);
    QCOMPARE(frmImport(false).zoom().Display.Fade, 30);
    host.intFade(0);
    host.strMonochrome("");
    host.booTransparentBackground(false);
    QCOMPARE(frmImport(false).zoom().Display.Monochrome, -1);
    QVERIFY(!frmImport(false).Look().Transparent);
  }

  void theFileMenuDependsOnHowTheProgramWasStarted() {
    frmImport user(false);
    QVERIFY(!user.Action("mnuFileExit0")->isVisible());
    QVERIFY(!user.Action("mnuFileExit1")->isVisible());
    QVERIFY(user.Action("mnuFileExit2")->isVisible());
    QCOMPARE(user.Action("mnuFileExit2")->text(), QString("E&xit"));
    frmImport host(true);
    QVERIFY(host.Action("mnuFileExit0")->isVisible());
    QVERIFY(host.Action("mnuFileExit1")->isVisible());
    QVERIFY(!host.Action("mnuFileExit2")->isVisible());
    QCOMPARE(host.Action("mnuFileExit1")->text(), QString("&Cancel Import"));
  }

  void escapeDisarmsTheMagnifierOnly() {
    frmImport window(false);
    gstrDXFFileName = kSample;
    window.FileOpen(false);
    QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(!window.zoomMode());
    window.mnuZoomPlus_Click();
    QVERIFY(window.zoomMode());
    QVERIFY(window.ToolbarButton("MagPlus")->isChecked());
    QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(!window.zoomMode());
    QVERIFY(!window.ToolbarButton("MagPlus")->isChecked());
  }

  void theAutomationClassHandsBackFreshBitmaps() {
    DXF empty;
    empty.ShowDialog();  // no file named: returns at once
    QVERIFY(empty.window() == nullptr);

    DXF dxf;
    dxf.strDXFFileName(kSample);
    WhenShown(dxf, [](frmImport& window) { window.mnuFileExit_Click(0); });
    dxf.ShowDialog();
    QVERIFY(dxf.window()->booPictureLoaded);
    std::string first = dxf.strBmpFileName(), second = dxf.strBmpFileName();
    QVERIFY(!first.empty());
    QVERIFY(first != second);
    QCOMPARE(QImage(QString::fromStdString(first)).size(), QSize(640, 480));
    // The placement of the bitmap: six lines, a square pixel, rows running down.
    const QStringList placement = QString::fromStdString(dxf.strPlacement()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(placement.size(), 6);
    QVERIFY(placement[0].toDouble() > 0);
    QCOMPARE(placement[3].toDouble(), -placement[0].toDouble());
    QCOMPARE(dxf.strPlacement(), dxf.window()->CurrentPlacement().WorldFileText());
    QCOMPARE(dxf.strCRS(), std::string());  // the sample says nothing of a map
    std::filesystem::remove(first);
    std::filesystem::remove(second);

    WhenShown(dxf, [](frmImport& window) { window.mnuFileExit_Click(1); });
    dxf.ShowDialog();
    QCOMPARE(dxf.strBmpFileName(), std::string());
    QCOMPARE(dxf.strPlacement(), std::string());
    dxf.Class_Terminate();

    // The same drawing with a .prj beside it: the bitmap's system is that one.
    QTemporaryDir dir;
    const QString copy = dir.filePath("plan.dxf");
    QVERIFY(QFile::copy(QString::fromStdString(kSample), copy));
    std::ofstream(dir.filePath("plan.prj").toStdString())
        << "GEOGCS[\"WGS 84\",DATUM[\"WGS_1984\",SPHEROID[\"WGS 84\",6378137,298.257223563]],"
           "PRIMEM[\"Greenwich\",0],UNIT[\"degree\",0.0174532925199433],AUTHORITY[\"EPSG\",\"4326\"]]";
    DXF placed;
    placed.strDXFFileName(copy.toStdString());
    WhenShown(placed, [](frmImport& window) { window.mnuFileExit_Click(0); });
    placed.ShowDialog();
    const std::string bitmap = placed.strBmpFileName();
    QVERIFY(placed.strCRS().find("WGS 84") != std::string::npos);
    std::filesystem::remove(bitmap);
    placed.Class_Terminate();
  }

  void escapeStopsALongLoadAndKeepsWhatWasRead() {
    QTemporaryDir dir;
    const std::string path = dir.filePath("long.dxf").toStdString();
    {
      std::ofstream out(path);
      out << "0\nSECTION\n2\nENTITIES\n";
      for (int i = 0; i < 300000; ++i)
        out << "0\nLINE\n8\n0\n10\n" << i % 1000 << "\n20\n" << i / 1000 << "\n11\n1\n21\n1\n";
      out << "0\nENDSEC\n0\nEOF\n";
    }
    frmImport window(false);
    window.show();
    gstrDXFFileName = path;
    QTimer::singleShot(0, &window, [&window] {
      QVERIFY(window.Busy());
      QVERIFY(window.CancelButton()->isVisible());
      QTest::keyClick(&window, Qt::Key_Escape);
    });
    window.FileOpen(false);
    QVERIFY(window.loadStopped());
    QVERIFY(window.booPictureLoaded);
    const int32_t kept = window.drawing().SeqCount();
    QVERIFY(kept > 0);
    QVERIFY(kept < 300000);
    QVERIFY(!window.CancelButton()->isVisible());
    QCOMPARE(window.statusBar()->currentMessage(),
             QString("The drawing is incomplete: loading was stopped."));
    QVERIFY(InkedPixels(window.Picture1()->image()) > 100);
    // Opened again without a stop, the whole drawing loads.
    window.FileOpen(false);
    QVERIFY(!window.loadStopped());
    QCOMPARE(window.drawing().SeqCount(), 300000);
  }

  void japaneseMenusShowRealGlyphs() {
    SetLanguage(Language::Japanese);
    frmImport window(false);
    int japanese = 0;
    for (QAction* action : window.findChildren<QAction*>()) {
      const QString text = action->text();
      japanese += std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() >= 0x3000; });
      QVERIFY2(MissingGlyphs(text, window.menuBar()->font()) == 0, qPrintable(text));
    }
    QVERIFY(japanese > 10);
    // A character that no face has is a box: the check above can see one.
    QVERIFY(MissingGlyphs(QString(QChar(0xE000)), window.menuBar()->font()) > 0);
    SetLanguage(std::nullopt);
  }

  void sharedSettingsGetTheirTrailingSeparator() {
    QTemporaryDir home, config;
    const QByteArray ownConfig = qgetenv("XDG_CONFIG_HOME");
    qputenv("DXFIMPORT_HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    RestoreSharedSettings(false);
    const std::string install = home.path().toStdString() + "/";
    QCOMPARE(BitmapDirectory(), install + "BACKGRND/");
    QCOMPARE(HelpDirectory(), install);
    {
      std::ofstream ini(home.filePath("CVDESIGN.INI").toStdString());
      ini << "[Paths]\nBitmap Directory=/data/bitmaps\nApplication Helpfile=/data/help/\n";
    }
    RestoreSharedSettings(false);
    QCOMPARE(BitmapDirectory(), std::string("/data/bitmaps/"));
    QCOMPARE(HelpDirectory(), std::string("/data/help/"));
    qunsetenv("DXFIMPORT_HOME");
    qputenv("XDG_CONFIG_HOME", ownConfig);  // the test's own settings again
  }
};

QTEST_MAIN(ViewerTest)
#include "viewer_test.moc"
