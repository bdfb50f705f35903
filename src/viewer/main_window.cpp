#include "viewer/main_window.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <algorithm>
#include <tuple>

#include "dxf/model/stats.h"
#include "render/import_check.h"
#include "render/picture_file.h"
#include "render/picture_writer.h"
#include "render/world_file.h"
#include "support/log.h"
#include "support/messages.h"
#include "support/runtime_error.h"
#include "support/shared_settings.h"
#include "support/texts.h"
#include "viewer/background_look_dialog.h"
#include "viewer/busy_work.h"
#include "viewer/choose_size_dialog.h"
#include "viewer/dialog_font.h"
#include "viewer/picture_box.h"

// The toolbar images live in this library's resources, which a static library must
// register itself.
static void InitViewerResources() { Q_INIT_RESOURCE(viewer); }

namespace dxfimport {

std::string gstrDXFFileName;

namespace {

QString Text(int id) { return QString::fromStdString(LoadResText(id)); }

// The viewer's own setting: the reading profile for the files it opens.
constexpr const char* kOrganization = "Corvath";
constexpr const char* kProgram = "dxfimport";
constexpr const char* kLegacySetting = "Viewer/LegacyReadingRules";
constexpr const char* kLineWeightsSetting = "Viewer/LineWeights";
constexpr const char* kBudgetSetting = "Viewer/EntityBudget";
constexpr const char* kReferenceFoldersSetting = "Viewer/ReferenceFolders";
constexpr const char* kFadeSetting = "Viewer/Fade";
constexpr const char* kMonochromeSetting = "Viewer/Monochrome";
constexpr const char* kTransparentSetting = "Viewer/TransparentBackground";
constexpr const char* kWorldFileSetting = "Viewer/WorldFile";
constexpr const char* kGeoreferenceSetting = "Viewer/Georeference";
constexpr int kReductions = 7;  // the Colour Depth menu's choices

// The hourglass for the length of an operation, restored on every way out.
class HourGlass {
 public:
  HourGlass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~HourGlass() { QApplication::restoreOverrideCursor(); }
  HourGlass(const HourGlass&) = delete;
  HourGlass& operator=(const HourGlass&) = delete;
};

// "A|*.a|B|*.b" as Qt's "A (*.a);;B (*.b)".
QString QtFilter(const QString& filter) {
  QStringList parts = filter.split('|'), out;
  for (int i = 0; i + 1 < parts.size(); i += 2) {
    QString name = parts[i];
    out << (name.contains('(') ? name : name + " (" + parts[i + 1] + ")");
  }
  return out.join(";;");
}

}  // namespace

frmImport::frmImport(bool startedForAutomation, QWidget* parent)
    : QMainWindow(parent), startedForAutomation_(startedForAutomation) {
  setObjectName("frmImport");
  InitViewerResources();
  HourGlass hourglass;
  ChooseOpenFile = [this] { return DefaultOpenFile(); };
  ChooseSaveFile = [this] { return DefaultSaveFile(); };
  ChooseColor = [this](QColor current) -> std::optional<QColor> {
    QColor chosen = QColorDialog::getColor(current, this);
    if (!chosen.isValid()) return std::nullopt;
    return chosen;
  };
  profile_ = QSettings(kOrganization, kProgram).value(kLegacySetting, false).toBool()
                 ? ReadingProfile::Legacy
                 : ReadingProfile::Modern;
  zoom_.Display.LineWeights = QSettings(kOrganization, kProgram).value(kLineWeightsSetting, false).toBool();

  viewport_ = new QScrollArea(this);
  viewport_->setObjectName("vsViewPort1");
  viewport_->setAlignment(Qt::AlignCenter);  // a picture smaller than the viewport is centred
  viewport_->setBackgroundRole(QPalette::Dark);
  picture_ = new PictureBox;
  picture_->setObjectName("Picture1");
  viewport_->setWidget(picture_);
  gear1_ = new QLabel(picture_);
  gear1_->setObjectName("Gear1");
  gear1_->hide();
  progress_ = new QProgressBar(viewport_->viewport());
  progress_->setObjectName("ProgressBar1");
  progress_->setRange(0, 100);
  progress_->setGeometry(20, 20, 300, 22);
  progress_->hide();
  cancel_ = new QPushButton(viewport_->viewport());
  cancel_->setObjectName("cmdCancel");
  cancel_->setGeometry(330, 18, 100, 26);
  cancel_->hide();
  connect(cancel_, &QPushButton::clicked, this, [this] { RequestStop(); });
  qApp->installEventFilter(
      new BusyInputGate([this] { return Busy(); }, [this] { RequestStop(); }, cancel_, this));
  zoom_.KeepDrawing = [this] { return KeepDrawing(); };
  entityBudget_ = QSettings(kOrganization, kProgram).value(kBudgetSetting, 0).toLongLong();
  for (const QString& folder :
       QSettings(kOrganization, kProgram).value(kReferenceFoldersSetting).toStringList())
    referenceFolders_.push_back(folder.toStdString());
  setCentralWidget(viewport_);
  statusBar()->setObjectName("StatusBar1");

  picture_->onMouseDown = [this](int x, int y) { Picture1_MouseDown(x, y); };
  picture_->onMouseMove = [this](int x, int y) { Picture1_MouseMove(x, y); };
  picture_->onMouseUp = [this](int x, int y) { Picture1_MouseUp(x, y); };

  zoom_.Display.Antialias = QSettings(kOrganization, kProgram).value("Viewer/SmoothLines", false).toBool();
  UseBackgroundLook(KeptBackgroundLook());
  CreateMenus();
  CreateToolbar();
  layoutMenu_->setEnabled(false);
  ApplyDialogFont(this, true);
  LoadCaptions();
  setWindowTitle(QString::fromStdString(ApplicationTitle()));
  resize(800, 620);
  if (QScreen* screen = QGuiApplication::primaryScreen()) {
    QRect area = screen->availableGeometry();
    move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
  }
  SetupNavigation();
  // The exit items shown depend only on how the program was started.
  exitItems_[0]->setVisible(startedForAutomation_);
  exitItems_[1]->setVisible(startedForAutomation_);
  exitItems_[2]->setVisible(!startedForAutomation_);
  zoom_.ColorByLayer = true;
  zoom_.AttributesVisible = true;
}

frmImport::~frmImport() = default;

void frmImport::CreateMenus() {
  auto item = [this](QMenu* menu, int id, const char* name, auto handler) {
    QAction* action = menu->addAction(QString());
    action->setObjectName(name);
    captioned_[id] = action;
    connect(action, &QAction::triggered, this, handler);
    return action;
  };
  auto menu = [this](int id, const char* name) {
    QMenu* m = menuBar()->addMenu(QString());
    m->setObjectName(name);
    captioned_[id] = m->menuAction();
    return m;
  };
  QMenu* file = menu(1026, "mnuFile");
  connect(file, &QMenu::aboutToShow, this, &frmImport::mnuFile_Click);
  item(file, 1027, "MnuFileOpen", [this] { FileOpen(true); })->setShortcut(QKeySequence::Open);
  item(file, 1028, "mnuFileSaveAsBitmap", &frmImport::mnuFileSaveAsBitmap_Click)
      ->setShortcut(QKeySequence::Save);
  recentMenu_ = file->addMenu(QString());
  recentMenu_->setObjectName("mnuFileRecent");
  captioned_[1075] = recentMenu_->menuAction();
  file->addSeparator()->setObjectName("mnufilesep1");
  exitItems_[0] = item(file, 1029, "mnuFileExit0", [this] { mnuFileExit_Click(0); });
  exitItems_[1] = item(file, 1054, "mnuFileExit1", [this] { mnuFileExit_Click(1); });
  exitItems_[2] = item(file, 1030, "mnuFileExit2", [this] { mnuFileExit_Click(2); });

  QMenu* edit = menu(1031, "mnuEdit");
  item(edit, 1032, "mnuEditCopy", &frmImport::mnuEditCopy_Click)->setShortcut(QKeySequence::Copy);

  QMenu* options = menu(1033, "mnuOptionS");
  connect(options, &QMenu::aboutToShow, this, &frmImport::mnuoptions_Click);
  item(options, 1034, "mnuOptionForecolor", &frmImport::mnuOptionForecolor_Click)
      ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
  item(options, 1035, "mnuOptionColor", &frmImport::mnuOptionColor_Click);
  item(options, 1036, "mnuOptionSize", &frmImport::mnuOptionSize_Click);
  item(options, 1048, "mnuOptionProperties", [this] { mnuOptionProperties_Click(); });
  options->addSeparator()->setObjectName("mnuOptionSep1");
  QMenu* depth = options->addMenu(QString());
  depth->setObjectName("mnuOptionReduce");
  captioned_[1055] = depth->menuAction();
  auto* depthGroup = new QActionGroup(this);
  // The dithered reductions, the default, then the reductions for line art.
  for (int i = 0; i < kReductions; ++i) {
    if (i == 4) depth->addSeparator();
    QAction* choice =
        item(depth, i < 4 ? 1056 + i : 1075 + i, "", [this, i] { mnuOptionReduceChoice_Click(i); });
    choice->setObjectName(QString("mnuOptionReduceChoice%1").arg(i));
    choice->setCheckable(true);
    choice->setChecked(i == 3);
    depthGroup->addAction(choice);
  }

  options->addSeparator();
  QAction* follow = item(options, 1072, "mnuOptionFollow", [] {});
  follow->setCheckable(true);
  follow->setChecked(QSettings(kOrganization, kProgram).value("Viewer/FollowWindow", true).toBool());
  connect(follow, &QAction::toggled, this, &frmImport::SetFollowWindow);
  QAction* smooth = item(options, 1073, "mnuOptionSmooth", [] {});
  smooth->setCheckable(true);
  smooth->setChecked(zoom_.Display.Antialias);
  connect(smooth, &QAction::toggled, this, &frmImport::mnuOptionSmooth_Click);
  QAction* weights = item(options, 1062, "mnuOptionLineWeights", [] {});
  weights->setCheckable(true);
  weights->setChecked(zoom_.Display.LineWeights);
  connect(weights, &QAction::toggled, this, &frmImport::mnuOptionLineWeights_Click);
  layoutMenu_ = options->addMenu(QString());
  layoutMenu_->setObjectName("mnuOptionLayout");
  captioned_[1063] = layoutMenu_->menuAction();
  item(options, 1070, "mnuOptionBudget", &frmImport::mnuOptionBudget_Click);
  item(options, 1088, "mnuOptionReferenceFolders", &frmImport::mnuOptionReferenceFolders_Click);
  item(options, 1090, "mnuOptionBackgroundLook", [this] { frmBackgroundLook(*this).exec(); });
  QAction* legacy = item(options, 1061, "mnuOptionLegacy", [] {});
  legacy->setCheckable(true);
  legacy->setChecked(profile_ == ReadingProfile::Legacy);
  connect(legacy, &QAction::toggled, this, &frmImport::mnuOptionLegacy_Click);

  QMenu* zoomMenu = menu(1037, "mnuZoom");
  connect(zoomMenu, &QMenu::aboutToShow, this, &frmImport::mnuZoom_Click);
  item(zoomMenu, 1038, "mnuZoomReset", &frmImport::mnuZoomReset_Click)
      ->setShortcuts({QKeySequence(Qt::Key_Home), QKeySequence(Qt::Key_F)});
  item(zoomMenu, 1039, "mnuZoomPlus", &frmImport::mnuZoomPlus_Click);
  item(zoomMenu, 1040, "mnuZoomMinus", &frmImport::mnuZoomMinus_Click)
      ->setShortcuts({QKeySequence(Qt::Key_Minus), QKeySequence(QKeySequence::ZoomOut)});
  item(zoomMenu, 1077, "mnuZoomIn", &frmImport::ZoomIn)
      ->setShortcuts(
          {QKeySequence(Qt::Key_Plus), QKeySequence(Qt::Key_Equal), QKeySequence(QKeySequence::ZoomIn)});
  item(zoomMenu, 1074, "mnuZoomPrevious", &frmImport::PreviousView)
      ->setShortcut(QKeySequence(Qt::Key_Backspace));

  QMenu* help = menu(1041, "mnuHelp");
  item(help, 1042, "mnuHelpHelp", &frmImport::mnuHelpHelp_Click)->setShortcut(QKeySequence::HelpContents);
  item(help, 1043, "mnuHelpAbout", &frmImport::mnuHelpAbout_Click);
}

void frmImport::CreateToolbar() {
  toolbar_ = addToolBar(QString());
  toolbar_->setObjectName("Toolbar1");
  toolbar_->setMovable(false);
  struct Button {
    const char* key;
    int tooltip;
  };
  const Button buttons[] = {{"Open", 1016},      {nullptr, 0},      {"Resize", 1017},  {nullptr, 0},
                            {"MagNormal", 1018}, {"MagPlus", 1019}, {"MagMinus", 1020}};
  for (const Button& b : buttons) {
    if (!b.key) {
      toolbar_->addSeparator();
      continue;
    }
    QString key = b.key;
    QAction* button = toolbar_->addAction(QIcon(":/toolbar/" + key), key);
    button->setObjectName(key);
    button->setToolTip(Text(b.tooltip));
    connect(button, &QAction::triggered, this, [this, key] { Toolbar1_ButtonClick(key); });
    toolbarButtons_[key] = button;
  }
  toolbarButtons_["MagPlus"]->setCheckable(true);
  SetZoomButtons(false);
}

void frmImport::LoadCaptions() {
  for (auto& [id, action] : captioned_) action->setText(Text(id));
  cancel_->setText(Text(1067));
}

QAction* frmImport::Action(const QString& objectName) const {
  for (auto& [id, action] : captioned_)
    if (action->objectName() == objectName || (action->menu() && action->menu()->objectName() == objectName))
      return action;
  return nullptr;
}

QAction* frmImport::ToolbarButton(const QString& key) const {
  auto found = toolbarButtons_.find(key);
  return found == toolbarButtons_.end() ? nullptr : found->second;
}

void frmImport::setBooGear1Visible(bool visible) {
  gear1Visible_ = visible;
  gear1_->setVisible(visible);
  if (visible) {
    gear1_->setGeometry(0, 0, picture_->width(), picture_->height());
    gear1_->setPixmap(QPixmap::fromImage(gearImage_));
  }
}

Georeference frmImport::CurrentGeoreference() const {
  std::string problem;
  return GeoreferenceOf(drawing_.Geo, gstrDXFFileName, "", problem);
}

QImage frmImport::CurrentPicture() const {
  QImage picture = gear1Visible_ ? gearImage_ : picture_->image();
  SetDotsPerInch(picture, pictureDpi_);
  return picture;
}

void frmImport::SetZoomButtons(bool enabled) {
  for (const char* key : {"MagNormal", "MagPlus", "MagMinus"}) toolbarButtons_[key]->setEnabled(enabled);
}

void frmImport::UpdateCaption(bool withFile) {
  QString title = QString::fromStdString(ApplicationTitle());
  if (withFile) title += " [" + QString::fromStdString(gstrDXFFileName) + "]";
  setWindowTitle(title);
}

void frmImport::FileOpen(bool showDialog) {
  if (Busy()) return;
  picture_->Cls();
  setBooGear1Visible(false);
  history_.clear();
  booPictureLoaded = OpenDXFFile(showDialog);
  SetZoomButtons(booPictureLoaded);
  if (booPictureLoaded) AddRecentFile(gstrDXFFileName);
  // The commands' shortcuts follow what the menus would offer now.
  mnuZoom_Click();
  mnuFile_Click();
}

bool frmImport::OpenDXFFile(bool showDialog) {
  zoom_.AttributesVisible = true;
  zoom_.ColorByLayer = true;
  if (showDialog) ChooseDXFFile();
  if (gstrDXFFileName.empty()) {
    UpdateCaption(false);
    return false;
  }
  HourGlass hourglass;
  if (!drawing_.InitDrawing(true)) {
    LogCritical("OpenDXFFile: the drawing tables could not be initialized");
    ShowMessage(MessageIcon::Critical, LoadResText(1023));
    return false;
  }
  stopRequested_ = false;
  loading_ = true;
  ProgressBarSink progress(progress_, cancel_, stopRequested_);
  DXFReader reader(drawing_, profile_);
  reader.SetOptions(LoadOptions{.Layout = layout_,
                                .EntityBudget = entityBudget_,
                                .ImageFolders = referenceFolders_,
                                .XrefFolders = referenceFolders_});
  bool loaded = reader.LoadDXF(gstrDXFFileName, &progress);
  loading_ = false;
  pendingView_.reset();  // views asked for during the load were views of the drawing before
  supersede_ = false;
  layout_.clear();  // a layout chosen in the menu holds for that read only
  FillLayoutMenu(reader.outcome());
  outcome_ = reader.outcome();
  loadStopped_ = loaded && reader.outcome().Cancelled;
  if (!loaded) {
    UpdateCaption(false);
    return false;
  }
  ShowLoadStatus(reader.outcome());
  if (drawing_.SeqCount() == 0 && loadStopped_) {
    UpdateCaption(false);
    return false;
  }
  zoom_.ExtentsZoom = ExtentsOf(drawing_);
  zoom_.FileName = gstrDXFFileName;
  zoom_.AttributesVisible = true;
  zoom_.MonochromePrint = false;
  picture_->Cls();
  progress_->raise();
  bool drawn = zoom_.Zoom(zoom_.ExtentsZoom, *picture_);
  QCoreApplication::processEvents();
  picture_->Refresh();
  UpdateCaption(true);
  if (drawn) rememberDirectory_ = true;
  LogView();
  DrawPendingView();
  return true;
}

// The status bar after a load: a stopped load, the layout shown instead of model space,
// and the inserts left out over the entity budget.
void frmImport::ShowLoadStatus(const LoadOutcome& outcome) {
  QStringList parts;
  if (outcome.Cancelled) parts << Text(1068);
  if (!outcome.Layout.empty())
    parts << QString::fromStdString(
        SubstituteArgs(LoadResText(outcome.ModelSpaceEmpty ? 1065 : 1066), {outcome.Layout}));
  for (const ReportEntry& entry : outcome.Report.Entries())
    if (!entry.Notice.empty()) parts << QString::fromStdString(entry.Notice);
  if (parts.isEmpty())
    statusBar()->clearMessage();
  else
    statusBar()->showMessage(parts.join("  "));
}

// Between the redraw's refresh points: window messages run (user input waits, see
// BusyInputGate); a stop asked for with Esc ends the redraw and says so.
bool frmImport::KeepDrawing() {
  if (!loading_) stopRequested_ = false;
  QCoreApplication::processEvents();
  if (stopRequested_) {
    stopRequested_ = false;
    pendingView_.reset();
    statusBar()->showMessage(Text(1069));
    return false;
  }
  // A view asked for meanwhile replaces the one being drawn.
  if (!supersede_) return true;
  supersede_ = false;
  return false;
}

void frmImport::mnuOptionBudget_Click() {
  bool ok = false;
  const int chosen = QInputDialog::getInt(this, QString::fromStdString(ApplicationTitle()), Text(1071),
                                          int(entityBudget_), 0, 2'000'000'000, 1'000'000, &ok);
  if (ok) SetEntityBudget(chosen);
}

void frmImport::SetEntityBudget(int64_t budget) {
  entityBudget_ = std::max<int64_t>(0, budget);
  QSettings(kOrganization, kProgram).setValue(kBudgetSetting, qlonglong(entityBudget_));
}

void frmImport::mnuOptionReferenceFolders_Click() {
  QStringList folders;
  for (const std::string& folder : referenceFolders_) folders << QString::fromStdString(folder);
  bool ok = false;
  const QString chosen = QInputDialog::getMultiLineText(this, QString::fromStdString(ApplicationTitle()),
                                                        Text(1089), folders.join('\n'), &ok);
  if (!ok) return;
  std::vector<std::string> kept;
  for (const QString& line : chosen.split('\n', Qt::SkipEmptyParts))
    if (!line.trimmed().isEmpty()) kept.push_back(line.trimmed().toStdString());
  SetReferenceFolders(kept);
}

// The drawing's figures, what the load skipped or left out, and whether the drawing serves
// as a background (modern profile).
void frmImport::mnuOptionProperties_Click() {
  std::vector<std::string> more;
  if (outcome_.Reported) {
    more.push_back("");
    for (const std::string& line : CheckImport(drawing_, outcome_, CurrentGeoreference()).Lines())
      more.push_back(line);
  }
  DisplayStats(drawing_, gstrDXFFileName, outcome_.ReportIfKept(), more);
}

void frmImport::SetBackgroundLook(const BackgroundLook& look) {
  KeepBackgroundLook(look);
  UseBackgroundLook(KeptBackgroundLook());
  if (booPictureLoaded) RedrawPicture();
}

void frmImport::UseBackgroundLook(const BackgroundLook& look) {
  zoom_.Display.Fade = look.Fade;
  zoom_.Display.Monochrome = look.Monochrome;
  transparentSaves_ = look.Transparent;
}

void frmImport::KeepBackgroundLook(const BackgroundLook& look) {
  QSettings settings(kOrganization, kProgram);
  settings.setValue(kFadeSetting, std::clamp(look.Fade, 0, 100));
  settings.setValue(kMonochromeSetting, look.Monochrome >= 0 ? look.Monochrome & 0xFFFFFF : -1);
  settings.setValue(kTransparentSetting, look.Transparent);
}

BackgroundLook frmImport::KeptBackgroundLook() {
  QSettings settings(kOrganization, kProgram);
  const int32_t monochrome = settings.value(kMonochromeSetting, -1).toInt();
  return {std::clamp(settings.value(kFadeSetting, 0).toInt(), 0, 100),
          monochrome >= 0 ? monochrome & 0xFFFFFF : -1, settings.value(kTransparentSetting, false).toBool()};
}

void frmImport::SetReferenceFolders(std::vector<std::string> folders) {
  referenceFolders_ = std::move(folders);
  QStringList list;
  for (const std::string& folder : referenceFolders_) list << QString::fromStdString(folder);
  QSettings(kOrganization, kProgram).setValue(kReferenceFoldersSetting, list);
}

void frmImport::ChooseDXFFile() {
  QString chosen = ChooseOpenFile();
  if (!chosen.isEmpty())
    gstrDXFFileName = chosen.toStdString();
  else
    gstrDXFFileName.clear();  // a cancelled dialog leaves nothing to open
}

QString frmImport::DefaultOpenFile() {
  QString directory = rememberDirectory_ ? QDir::currentPath() : QString::fromStdString(BitmapDirectory());
  QFileDialog dialog(this, Text(1021), directory, QtFilter(Text(1022) + "|*.DXF *.dxf|(*.*)|*"));
  dialog.setFileMode(QFileDialog::ExistingFile);
  dialog.setDefaultSuffix("DXF");
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  QString file = dialog.selectedFiles().front();
  QDir::setCurrent(QFileInfo(file).absolutePath());
  return file;
}

QString frmImport::DefaultSaveFile() {
  // The bitmaps of old, then PNG and TIFF, then all files.
  QStringList filter = Text(1025).split('|');
  const QStringList more = Text(1094).split('|');
  for (int i = 0; i < more.size(); ++i) filter.insert(2 + i, more[i]);
  QFileDialog dialog(this, Text(1053), QString::fromStdString(BitmapDirectory()), QtFilter(filter.join('|')));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix("BMP");
  // The dialog's own layout takes one more row: the world-file choice, kept between runs.
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  auto* worldFile = new QCheckBox(Text(1078), &dialog);
  worldFile->setObjectName("worldFile");
  worldFile->setChecked(QSettings(kOrganization, kProgram).value(kWorldFileSetting, false).toBool());
  auto* onMap = new QCheckBox(Text(1095), &dialog);
  onMap->setObjectName("georeference");
  onMap->setChecked(QSettings(kOrganization, kProgram).value(kGeoreferenceSetting, false).toBool());
  if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
    grid->addWidget(worldFile, grid->rowCount(), 0, 1, -1);
    grid->addWidget(onMap, grid->rowCount(), 0, 1, -1);
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  QSettings(kOrganization, kProgram).setValue(kWorldFileSetting, worldFile->isChecked());
  QSettings(kOrganization, kProgram).setValue(kGeoreferenceSetting, onMap->isChecked());
  return dialog.selectedFiles().front();
}

bool frmImport::Redraw(const ZoomRect& window) {
  picture_->Cls();
  bool drawn = zoom_.Zoom(window, *picture_);
  picture_->Refresh();
  DrawPendingView();
  return drawn;
}

void frmImport::mnuZoomReset_Click() {
  if (booPictureLoaded) Redraw(zoom_.ExtentsZoom);
}

void frmImport::ZoomReset() {
  if (booPictureLoaded) Redraw(zoom_.CurrentZoom());
}

void frmImport::mnuZoomMinus_Click() {
  if (!booPictureLoaded) return;
  zoom_.StationaryZoom(float(picture_->width()) / 2, float(picture_->height()) / 2, 50, *picture_);
  DrawPendingView();
}

void frmImport::mnuZoomPlus_Click() {
  if (!booPictureLoaded) return;
  picture_->setCursor(QCursor(QPixmap(":/toolbar/MagCursor"), 12, 12));
  toolbarButtons_["MagPlus"]->setChecked(true);
  zoomMode_ = true;
}

void frmImport::Picture1_MouseDown(int x, int y) {
  if (!zoomMode_) return;
  zoomMode_ = false;
  rubberX0_ = rubberX1_ = x;
  rubberY0_ = rubberY1_ = y;
  rubberActive_ = true;
}

void frmImport::Picture1_MouseMove(int x, int y) {
  if (!rubberActive_) return;
  rubberX1_ = x, rubberY1_ = y;
  picture_->SetRubberBand(QRect(QPoint(rubberX0_, rubberY0_), QPoint(rubberX1_, rubberY1_)).normalized());
}

// A release after a press on the armed picture: a drag of 15 pixels or more in both
// directions zooms to the rectangle; anything else (a thin drag too) zooms in twice
// about the release point.
void frmImport::Picture1_MouseUp(int x, int y) {
  if (!rubberActive_) return;
  picture_->unsetCursor();
  toolbarButtons_["MagPlus"]->setChecked(false);
  picture_->SetRubberBand(QRect());
  rubberActive_ = false;
  rubberX1_ = x, rubberY1_ = y;
  const int minX = std::min(rubberX0_, rubberX1_), maxX = std::max(rubberX0_, rubberX1_);
  const int minY = std::min(rubberY0_, rubberY1_), maxY = std::max(rubberY0_, rubberY1_);
  if (std::abs(float(maxX - minX)) < 15 || std::abs(float(maxY - minY)) < 15) {
    zoom_.StationaryZoom(float(x), float(y), 200, *picture_);
    DrawPendingView();
    return;
  }
  if (zoom_.Engine.ViewScale == 0) return;
  zoom_.NextZoom = zoom_.WindowOfPixels(minX, minY, maxX, maxY, picture_->ScaleHeight());
  Redraw(zoom_.NextZoom);
}

void frmImport::mnuZoom_Click() {
  for (const char* name : {"mnuZoomReset", "mnuZoomPlus", "mnuZoomMinus", "mnuZoomIn"})
    Action(name)->setEnabled(booPictureLoaded);
}

void frmImport::mnuoptions_Click() {
  for (const char* name : {"mnuOptionForecolor", "mnuOptionProperties", "mnuOptionReduce"})
    Action(name)->setEnabled(booPictureLoaded);
  if (!gear1Visible_) {
    for (int i = 0; i < kReductions; ++i)
      Action(QString("mnuOptionReduceChoice%1").arg(i))->setChecked(i == 3);
  }
}

void frmImport::mnuOptionReduceChoice_Click(int index) {
  HourGlass hourglass;
  for (int i = 0; i < kReductions; ++i)
    Action(QString("mnuOptionReduceChoice%1").arg(i))->setChecked(i == index);
  static constexpr ColorDepth kDepths[] = {ColorDepth::Colors256, ColorDepth::Colors16, ColorDepth::Mono,
                                           ColorDepth::Full,      ColorDepth::Palette,  ColorDepth::Threshold,
                                           ColorDepth::Grey};
  if (index >= 0 && index < kReductions && index != 3) {
    const ColorDepth chosen = kDepths[index];
    depth_ = chosen;
    gearImage_ = ReduceColors(picture_->image(), chosen, InksOf(zoom_, picture_->BackColor(), chosen));
    setBooGear1Visible(true);
  } else {
    setBooGear1Visible(false);
  }
}

void frmImport::mnuOptionColor_Click() {
  setBooGear1Visible(false);
  std::optional<QColor> chosen = ChooseColor(picture_->BackColor());
  if (!chosen || *chosen == picture_->BackColor()) return;  // cancelled or the same colour
  picture_->SetBackColor(*chosen);
  picture_->Cls();
  setBooGear1Visible(false);
  if (booPictureLoaded) {
    zoom_.Zoom(zoom_.CurrentZoom(), *picture_);
    ++redrawCount_;
  }
  picture_->Refresh();
  DrawPendingView();
}

void frmImport::mnuOptionForecolor_Click() {
  setBooGear1Visible(false);
  if (booPictureLoaded && OpenLayerDialog) OpenLayerDialog();
}

void frmImport::mnuOptionLineWeights_Click(bool checked) {
  zoom_.Display.LineWeights = checked;
  QSettings(kOrganization, kProgram).setValue(kLineWeightsSetting, checked);
  RedrawPicture();
}

// The layouts of the drawing: model space first, then each paper-space layout; choosing
// one reads the file again showing it.
void frmImport::FillLayoutMenu(const LoadOutcome& outcome) {
  layoutMenu_->clear();
  auto* group = new QActionGroup(layoutMenu_);
  auto add = [&](const QString& caption, const std::string& layout, bool current) {
    QAction* choice = layoutMenu_->addAction(caption);
    choice->setCheckable(true);
    choice->setChecked(current);
    group->addAction(choice);
    connect(choice, &QAction::triggered, this, [this, layout] {
      layout_ = layout;
      FileOpen(false);
    });
  };
  add(Text(1064), "", outcome.Layout.empty());
  for (const std::string& layout : outcome.Layouts)
    add(QString::fromStdString(layout), layout, layout == outcome.Layout);
  layoutMenu_->setEnabled(outcome.LayoutsToChoose());
}

void frmImport::mnuOptionLegacy_Click(bool checked) {
  profile_ = checked ? ReadingProfile::Legacy : ReadingProfile::Modern;
  QSettings(kOrganization, kProgram).setValue(kLegacySetting, checked);
}

void frmImport::RedrawPicture() {
  setBooGear1Visible(false);
  if (!booPictureLoaded) return;
  ++redrawCount_;
  Redraw(zoom_.CurrentZoom());
}

void frmImport::mnuFile_Click() { Action("mnuFileSaveAsBitmap")->setEnabled(booPictureLoaded); }

// The picture as it is shown, written to `file` (BMP, PNG or TIFF by its name) through the
// picture writer, with the placement files the Save As choices ask for.
bool frmImport::WriteCurrentPicture(const std::string& file, bool worldFile, bool georeference) {
  if (!booPictureLoaded) return false;
  ZoomState view(drawing_);
  static_cast<ZoomView&>(view) = zoom_;
  PictureOutput out;
  out.Path = file;
  if (PictureOutput::FormatOf(file) == PictureOutput::Format::Unknown) out.Path += ".bmp";
  out.Width = picture_->image().width(), out.Height = picture_->image().height();
  out.Dpi = pictureDpi_;
  out.Depth = gear1Visible_ ? depth_ : ColorDepth::Full;
  out.Background = picture_->BackColor();
  const PictureOutput::Format format = PictureOutput::FormatOf(out.Path);
  if (transparentSaves_ && (format == PictureOutput::Format::Png || format == PictureOutput::Format::Tiff))
    out.Background.setAlpha(0), out.Depth = ColorDepth::Full;
  out.WorldFile = worldFile, out.Georeference = georeference;
  out.Geo = CurrentGeoreference();
  out.Title = gstrDXFFileName;
  return OutputProblem(out).empty() &&
         WritePictureFile(view, zoom_.CurrentZoom(), out) == WriteOutcome::Written;
}

void frmImport::mnuFileSaveAsBitmap_Click() {
  HourGlass hourglass;
  QString file = ChooseSaveFile();
  if (file.isEmpty()) return;
  const QSettings settings(kOrganization, kProgram);
  if (!WriteCurrentPicture(file.toStdString(), settings.value(kWorldFileSetting, false).toBool(),
                           settings.value(kGeoreferenceSetting, false).toBool())) {
    ShowMessage(MessageIcon::Critical, SubstituteArgs(LoadResText(1049), {std::to_string(kErrPathFileAccess),
                                                                          RunTimeText(kErrPathFileAccess)}) +
                                           "\n\n" + file.toStdString());
  }
}

void frmImport::mnuEditCopy_Click() { QGuiApplication::clipboard()->setImage(CurrentPicture()); }

void frmImport::mnuOptionSize_Click() {
  setBooGear1Visible(false);
  frmChooseSize dialog(*this);
  dialog.exec();
}

void frmImport::mnuFileExit_Click(int index) {
  hide();
  if (!startedForAutomation_) close();
  booImportCancel = index == 1;
}

void frmImport::closeEvent(QCloseEvent* event) {
  SaveWindowGeometry();
  if (event->spontaneous()) {
    hide();
    if (startedForAutomation_) {
      event->ignore();
      booImportCancel = false;
      return;
    }
  }
  event->accept();
  if (!startedForAutomation_) QApplication::closeAllWindows();
}

void frmImport::hideEvent(QHideEvent* event) {
  QMainWindow::hideEvent(event);
  if (onHidden) onHidden();
}

void frmImport::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) spaceDown_ = true;
  if (event->key() != Qt::Key_Escape) return QMainWindow::keyPressEvent(event);
  if (Busy()) return RequestStop();
  QAction* magPlus = toolbarButtons_["MagPlus"];
  if (magPlus->isChecked()) {
    magPlus->setChecked(false);
    zoomMode_ = false;
    picture_->unsetCursor();
  }
}

void frmImport::Toolbar1_ButtonClick(const QString& key) {
  if (key == "Open")
    FileOpen(true);
  else if (key == "Resize")
    mnuOptionSize_Click();
  else if (key == "MagNormal")
    mnuZoomReset_Click();
  else if (key == "MagPlus")
    mnuZoomPlus_Click();
  else if (key == "MagMinus")
    mnuZoomMinus_Click();
  else
    LogCritical("unsupported toolbar button: " + key.toStdString());
}

void frmImport::mnuHelpHelp_Click() {
  const std::string file = HelpDirectory() + "cvdesign.hlp";
  if (!QFileInfo::exists(QString::fromStdString(file))) {
    ShowMessage(MessageIcon::Information, SubstituteArgs(LoadResText(1060), {file}));
    return;
  }
  QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(file)));
}

void frmImport::mnuHelpAbout_Click() {
  QMessageBox::about(
      this, Text(1001),
      "<b>" + QString::fromStdString(ApplicationTitle()) + "</b><br>" + Text(1002) + "<br><br>" + Text(1003));
}

}  // namespace dxfimport
