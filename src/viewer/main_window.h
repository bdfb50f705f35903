#pragma once

#include <QColor>
#include <QImage>
#include <QMainWindow>
#include <QStringList>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "dxf/model/drawing.h"
#include "dxf/reader.h"
#include "geo/georeference.h"
#include "render/color_depth.h"
#include "render/redraw.h"
#include "render/world_file.h"

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QTimer;
class QScrollArea;
class QToolBar;

namespace dxfimport {

class PictureBox;

// The DXF file the main window opens: set by the automation class or by the Open dialog.
extern std::string gstrDXFFileName;

// The look of the picture as a background: every ink faded `Fade` percent toward the
// background, all in `Monochrome` (0x00BBGGRR; -1: their own), and PNG and TIFF pictures
// saved on a transparent background.
struct BackgroundLook {
  int32_t Fade = 0;
  int32_t Monochrome = -1;
  bool Transparent = false;
};

// The viewer's main window: opens a drawing, shows it in a scrollable picture, and saves
// or copies the picture. Started by a user it ends the program when it closes; started
// for the host (automation) it only hides, and its File menu offers "Exit and Return to
// Caller" and "Cancel Import" instead of "Exit".
class frmImport : public QMainWindow {
 public:
  explicit frmImport(bool startedForAutomation, QWidget* parent = nullptr);
  ~frmImport() override;

  // Public state read by the automation class and the dialogs.
  bool booPictureLoaded = false;  // the last open succeeded
  bool booImportCancel = false;   // the user left with "Cancel Import"
  // The last load was stopped by the user (what was read is shown; the host gets no
  // bitmap of it).
  bool loadStopped() const { return loadStopped_; }
  bool dragging() const { return panning_; }
  // True while a load or a redraw runs: user input other than Esc and the Cancel button
  // waits, and Esc or Cancel stops the work.
  bool Busy() const { return loading_ || zoom_.InProgress(); }
  void RequestStop() { stopRequested_ = true; }
  bool booGear1Visible() const { return gear1Visible_; }
  void setBooGear1Visible(bool visible);

  // Opens gstrDXFFileName, or first asks for a file when `showDialog`.
  void FileOpen(bool showDialog);
  bool OpenDXFFile(bool showDialog);

  // Zoom commands: the whole drawing; the current window again (after a size change);
  // zoom out about the centre; arm the magnifier for a click or a dragged rectangle.
  void mnuZoomReset_Click();
  void ZoomReset();
  void mnuZoomMinus_Click();
  void mnuZoomPlus_Click();
  bool zoomMode() const { return zoomMode_; }

  // The Options menu: enabled states on opening; colour depth; background colour; the
  // layer dialog; the reading profile for the next file.
  void mnuoptions_Click();
  // The Zoom menu's commands are enabled exactly while a drawing is loaded.
  void mnuZoom_Click();
  void mnuOptionReduceChoice_Click(int index);
  void mnuOptionColor_Click();
  void mnuOptionForecolor_Click();
  void mnuOptionLegacy_Click(bool checked);
  // Line weights drawn as pen widths (kept between runs).
  void mnuOptionLineWeights_Click(bool checked);
  // Draws the current window again on the full-colour picture (after a layer edit).
  void RedrawPicture();
  int redrawCount() const { return redrawCount_; }

  void mnuFileSaveAsBitmap_Click();
  void mnuEditCopy_Click();
  void mnuOptionSize_Click();
  void mnuFileExit_Click(int index);
  void mnuHelpHelp_Click();
  void mnuHelpAbout_Click();
  void mnuFile_Click();
  void Toolbar1_ButtonClick(const QString& key);

  // The picture that Save, Copy and the host get: the colour-reduced copy while it is
  // shown, else the picture.
  QImage CurrentPicture() const;
  // Writes the picture as shown to `file` (BMP, PNG or TIFF by its extension; none: BMP)
  // with a world file, or on the map (world file in the system's coordinates, .prj and
  // .aux.xml); false when it could not.
  bool WriteCurrentPicture(const std::string& file, bool worldFile = false, bool georeference = false);
  // Where the current picture lies on the drawing.
  PicturePlacement CurrentPlacement() const { return PlacementOf(zoom_.Engine); }
  // The drawing's place on a map: its system (GEODATA, or NAME.prj beside the file).
  Georeference CurrentGeoreference() const;

  PictureBox* Picture1() const { return picture_; }
  Drawing& drawing() { return drawing_; }
  ZoomState& zoom() { return zoom_; }
  QAction* Action(const QString& objectName) const;
  QAction* ToolbarButton(const QString& key) const;
  QProgressBar* ProgressBar1() const { return progress_; }
  QPushButton* CancelButton() const { return cancel_; }
  // What the last modern load skipped, repaired or left out (shown by Properties).
  const LoadReport& loadReport() const { return outcome_.Report; }
  void mnuOptionProperties_Click();
  // The entity budget of the loads (0: the default); kept between runs.
  void mnuOptionBudget_Click();
  void mnuOptionReferenceFolders_Click();
  void SetEntityBudget(int64_t budget);
  // Folders where the images and external references a drawing names are also looked
  // for (kept between runs).
  void SetReferenceFolders(std::vector<std::string> folders);
  // The look of a background (kept for the next runs; the picture is drawn again).
  void SetBackgroundLook(const BackgroundLook& look);
  // The same kept for the next runs without a window, and what is kept.
  static void KeepBackgroundLook(const BackgroundLook& look);
  static BackgroundLook KeptBackgroundLook();
  const BackgroundLook Look() const {
    return {zoom_.Display.Fade, zoom_.Display.Monochrome, transparentSaves_};
  }
  const std::vector<std::string>& referenceFolders() const { return referenceFolders_; }
  int64_t entityBudget() const { return entityBudget_; }

  // Navigation (navigation.cpp). The picture follows the window's size unless a size was
  // chosen in the picture-size dialog; the wheel zooms about the pointer (1.25 a notch),
  // the middle button (or Space with the left) drags the view, a middle double click
  // shows the extents; the status bar shows the pointer's drawing coordinates and the
  // zoom.
  bool followsWindow() const { return followWindow_; }
  void SetFollowWindow(bool follow);
  // The picture-size dialog's choice: a fixed picture of this size.
  // A fixed picture size (and the resolution its bitmaps are saved with; 0 leaves it unsaid).
  void ChoosePictureSize(int width, int height, double dpi = 0);
  void WheelZoom(QPointF at, double notches);
  void ZoomIn();        // about the picture's centre, twice
  void PreviousView();  // back to the view before the last zoom or pan
  QString coordinatesText() const;
  void OpenFile(const QString& file);  // as a dropped file or a recent file is opened
  QStringList recentFiles() const { return recent_; }
  void mnuOptionSmooth_Click(bool checked);

  // Called whenever the window is hidden (the modal viewer of the host ends then).
  std::function<void()> onHidden;

  void SetReadingProfile(ReadingProfile profile) { profile_ = profile; }
  ReadingProfile readingProfile() const { return profile_; }

  // The file dialogs, replaceable (tests). Each returns the chosen path, or "" when the
  // user cancelled.
  std::function<QString()> ChooseOpenFile;
  std::function<QString()> ChooseSaveFile;
  // The colour dialog, replaceable (tests): the chosen colour, or nothing when cancelled.
  std::function<std::optional<QColor>(QColor)> ChooseColor;
  // Opens the layer dialog; wired by the application, which owns both windows.
  std::function<void()> OpenLayerDialog;

  // Mouse gestures on the picture (device pixels).
  void Picture1_MouseDown(int x, int y);
  void Picture1_MouseMove(int x, int y);
  void Picture1_MouseUp(int x, int y);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void CreateMenus();
  void CreateToolbar();
  void LoadCaptions();
  void ChooseDXFFile();
  bool Redraw(const ZoomRect& window);
  void UpdateCaption(bool withFile);
  void SetZoomButtons(bool enabled);
  void FillLayoutMenu(const LoadOutcome& outcome);
  void ShowLoadStatus(const LoadOutcome& outcome);
  void SetupNavigation();
  void FitPictureToWindow();
  bool Gesture(QMouseEvent* event);
  // Shows a view, drawn off the screen, then shown at once. A redraw is never entered
  // while one runs: a view asked for meanwhile (a drag or a wheel notch while the redraw
  // lets window messages run) stops the running redraw and is drawn after it, the latest
  // one only.
  void ShowView(const ZoomRect& window);
  void DrawView(const ZoomRect& window);
  // Draws the view asked for during the redraw that just ended, if any.
  void DrawPendingView();
  // The latest view asked for (the one waiting, else the one drawn) moved by a drag, or
  // zoomed by `factor` about a picture point.
  ZoomRect PannedView(QPoint moved) const;
  ZoomRect ZoomedView(QPointF at, double factor) const;
  double PendingScale() const;
  void RememberView();
  void LogView() const;
  void ShowCoordinates(std::optional<QPoint> at);
  void AddRecentFile(const std::string& file);
  void FillRecentMenu();
  void SaveWindowGeometry();
  bool KeepDrawing();
  QString DefaultOpenFile();
  QString DefaultSaveFile();

  bool startedForAutomation_;
  Drawing drawing_;
  ZoomState zoom_{drawing_};
  ReadingProfile profile_ = ReadingProfile::Modern;
  bool gear1Visible_ = false;
  bool rememberDirectory_ = false;
  bool zoomMode_ = false;
  bool rubberActive_ = false;
  int rubberX0_ = 0, rubberY0_ = 0, rubberX1_ = 0, rubberY1_ = 0;
  int redrawCount_ = 0;
  QImage gearImage_;
  ColorDepth depth_ = ColorDepth::Full;  // the reduction of the colour-reduced copy
  bool transparentSaves_ = false;        // PNG and TIFF saved with a transparent background
  void UseBackgroundLook(const BackgroundLook& look);
  double pictureDpi_ = 0;  // the resolution saved bitmaps carry (0: none said)

  PictureBox* picture_ = nullptr;
  QLabel* gear1_ = nullptr;
  QScrollArea* viewport_ = nullptr;
  QProgressBar* progress_ = nullptr;
  QPushButton* cancel_ = nullptr;
  bool loading_ = false;
  bool stopRequested_ = false;
  bool loadStopped_ = false;
  LoadOutcome outcome_;  // how the last load ended (its report, when the reader kept one)
  int64_t entityBudget_ = 0;
  std::vector<std::string> referenceFolders_;
  bool followWindow_ = true;
  QTimer* fitTimer_ = nullptr;
  bool panning_ = false, spaceDown_ = false, panRedrawPending_ = false;
  QPoint panFrom_;                       // where the drag started (picture pixels)
  std::optional<ZoomRect> pendingView_;  // asked for while a redraw ran: drawn next
  bool supersede_ = false;               // the running redraw stops for pendingView_
  std::vector<ZoomRect> history_;        // the views before each zoom or pan, newest last
  QLabel* coordinates_ = nullptr;
  QMenu* recentMenu_ = nullptr;
  QStringList recent_;
  QToolBar* toolbar_ = nullptr;
  QMenu* layoutMenu_ = nullptr;
  std::string layout_;  // the layout the next read shows ("" model space)
  std::map<QString, QAction*> toolbarButtons_;
  std::map<int, QAction*> captioned_;  // string id -> action or menu action
  QAction* exitItems_[3] = {nullptr, nullptr, nullptr};
};

}  // namespace dxfimport
