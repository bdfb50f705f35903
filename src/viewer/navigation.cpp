// The main window's navigation as CAD viewers have it: a picture that follows the
// window, wheel zoom about the pointer, dragging the view, previous view, the pointer's
// drawing coordinates, recent files and dropped files.
#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <cmath>

#include "render/surface.h"
#include "support/log.h"
#include "support/texts.h"
#include "viewer/main_window.h"
#include "viewer/picture_box.h"

namespace dxfimport {
namespace {

constexpr const char* kOrganization = "Corvath";
constexpr const char* kProgram = "dxfimport";
constexpr const char* kFollowSetting = "Viewer/FollowWindow";
constexpr const char* kRecentSetting = "Viewer/RecentFiles";
constexpr const char* kGeometrySetting = "Viewer/Geometry";
constexpr int kRecentCount = 8;
constexpr double kNotchFactor = 1.25;

QSettings Settings() { return QSettings(kOrganization, kProgram); }

bool IsDxfFile(const QString& path) { return path.endsWith(".dxf", Qt::CaseInsensitive); }

}  // namespace

void frmImport::SetupNavigation() {
  QSettings settings = Settings();
  followWindow_ = settings.value(kFollowSetting, true).toBool();
  recent_ = settings.value(kRecentSetting).toStringList();
  if (settings.contains(kGeometrySetting)) restoreGeometry(settings.value(kGeometrySetting).toByteArray());

  fitTimer_ = new QTimer(this);
  fitTimer_->setSingleShot(true);
  fitTimer_->setInterval(60);
  connect(fitTimer_, &QTimer::timeout, this, &frmImport::FitPictureToWindow);
  viewport_->viewport()->installEventFilter(this);

  picture_->onGesture = [this](QMouseEvent* event) { return Gesture(event); };
  picture_->onWheel = [this](QPointF at, double notches) { WheelZoom(at, notches); };
  picture_->onHover = [this](std::optional<QPoint> at) { ShowCoordinates(at); };
  coordinates_ = new QLabel(this);
  coordinates_->setObjectName("lblCoordinates");
  statusBar()->addPermanentWidget(coordinates_);
  setAcceptDrops(true);
  FillRecentMenu();
}

// A resize of the window's viewing area: the picture follows it (a little later, once
// the resizing stops).
bool frmImport::eventFilter(QObject* watched, QEvent* event) {
  if (watched == viewport_->viewport() && event->type() == QEvent::Resize && followWindow_)
    fitTimer_->start();
  return QMainWindow::eventFilter(watched, event);
}

void frmImport::FitPictureToWindow() {
  if (!followWindow_) return;
  if (Busy()) return fitTimer_->start();  // the picture follows once the work is done
  const QSize area = viewport_->viewport()->size();
  if (area.width() < 16 || area.height() < 16 || area == picture_->image().size()) return;
  setBooGear1Visible(false);
  // The extents stay fitted; any other view keeps its centre and its scale.
  const ZoomRect now = zoom_.CurrentZoom(), all = zoom_.ExtentsZoom;
  const double scale = zoom_.Engine.ViewScale, slack = 0.5 / std::max(scale, 1e-300);
  const bool extents = std::abs(now.left - all.left) < slack && std::abs(now.bottom - all.bottom) < slack &&
                       (std::abs(now.right - all.right) < slack || std::abs(now.top - all.top) < slack);
  picture_->ResizePicture(area.width(), area.height());
  if (!booPictureLoaded) return;
  if (extents || !(scale > 0)) return ShowView(all);
  const double cx = (now.left + now.right) / 2, cy = (now.top + now.bottom) / 2;
  const double hw = area.width() / scale / 2, hh = area.height() / scale / 2;
  ShowView({cx - hw, cy + hh, cx + hw, cy - hh});
}

void frmImport::SetFollowWindow(bool follow) {
  followWindow_ = follow;
  Settings().setValue(kFollowSetting, follow);
  if (QAction* item = Action("mnuOptionFollow")) item->setChecked(follow);
  if (follow) pictureDpi_ = 0, FitPictureToWindow();
}

void frmImport::ChoosePictureSize(int width, int height, double dpi) {
  pictureDpi_ = dpi;
  SetFollowWindow(false);
  picture_->ResizePicture(width, height);
  ZoomReset();
}

// Draws a window into a picture of the current size off the screen and shows it at once:
// the view changes without the picture being cleared first.
void frmImport::ShowView(const ZoomRect& window) {
  if (!booPictureLoaded) return;
  if (Busy()) {
    pendingView_ = window;
    supersede_ = zoom_.InProgress();
    return;
  }
  DrawView(window);
  DrawPendingView();
}

void frmImport::DrawPendingView() {
  while (pendingView_ && !Busy()) {
    const ZoomRect next = *pendingView_;
    pendingView_.reset();
    DrawView(next);
  }
}

void frmImport::DrawView(const ZoomRect& window) {
  ImageSurface canvas(picture_->image().width(), picture_->image().height(), picture_->BackColor());
  canvas.Cls();
  // A picture cut short for the next view is not shown: the next one is drawn at once.
  if (zoom_.Zoom(window, canvas) && !pendingView_) picture_->SetImage(canvas.image());
  ShowCoordinates(picture_->mapFromGlobal(QCursor::pos()));
  LogView();
}

// The scale of the view waiting to be drawn: its window has the picture's aspect.
double frmImport::PendingScale() const {
  const double width = pendingView_->right - pendingView_->left;
  return width != 0 ? picture_->width() / width : 0;
}

ZoomRect frmImport::PannedView(QPoint moved) const {
  if (!pendingView_) return zoom_.Panned(moved.x(), moved.y());
  return PannedWindow(*pendingView_, PendingScale(), moved.x(), moved.y());
}

ZoomRect frmImport::ZoomedView(QPointF at, double factor) const {
  if (!pendingView_) return zoom_.ZoomedAbout(at.x(), at.y(), factor);
  const double scale = PendingScale();
  const ZoomRect& z = *pendingView_;
  if (!(scale > 0)) return z;
  return ZoomedWindow(z, {z.left + at.x() / scale, z.top - at.y() / scale}, factor);
}

// The view in the log, for whoever follows the window from outside (a test driving it).
void frmImport::LogView() const {
  const ZoomRect& z = zoom_.CurrentZoom();
  LogDebug(QString("View: picture %1x%2, window %3 %4 %5 %6")
               .arg(picture_->width())
               .arg(picture_->height())
               .arg(z.left, 0, 'g', 17)
               .arg(z.top, 0, 'g', 17)
               .arg(z.right, 0, 'g', 17)
               .arg(z.bottom, 0, 'g', 17)
               .toStdString());
}

void frmImport::RememberView() {
  history_.push_back(zoom_.CurrentZoom());
  if (history_.size() > 50) history_.erase(history_.begin());
}

// A notch during a redraw zooms the view that waits to be drawn.
void frmImport::WheelZoom(QPointF at, double notches) {
  if (!booPictureLoaded || notches == 0 || loading_) return;
  LogDebug(QString("Wheel: %1 notches at %2 %3").arg(notches).arg(at.x()).arg(at.y()).toStdString());
  if (!pendingView_) RememberView();
  ShowView(ZoomedView(at, std::pow(kNotchFactor, notches)));
}

void frmImport::ZoomIn() {
  if (!booPictureLoaded) return;
  RememberView();
  ShowView(zoom_.ZoomedAbout(picture_->width() / 2.0, picture_->height() / 2.0, 2));
}

void frmImport::PreviousView() {
  if (!booPictureLoaded || history_.empty()) return;
  const ZoomRect back = history_.back();
  history_.pop_back();
  ShowView(back);
}

// The middle button (or Space with the left) drags the view: the picture moves with the
// pointer at once, and the view is drawn anew for where it has got to whenever the
// drawing keeps up. A middle double click shows the extents.
bool frmImport::Gesture(QMouseEvent* event) {
  if (!booPictureLoaded) return false;
  const QPoint at = event->position().toPoint();
  const bool dragButton =
      event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceDown_);
  switch (event->type()) {
    case QEvent::MouseButtonDblClick:
      if (event->button() != Qt::MiddleButton) return false;
      RememberView();
      ShowView(zoom_.ExtentsZoom);
      return true;
    case QEvent::MouseButtonPress:
      if (!dragButton || zoomMode_) return false;
      RememberView();
      panning_ = true;
      panFrom_ = at;
      picture_->setCursor(Qt::ClosedHandCursor);
      return true;
    case QEvent::MouseMove:
      if (!panning_) return false;
      picture_->SetPanOffset(at - panFrom_);
      if (!panRedrawPending_) {
        panRedrawPending_ = true;
        QTimer::singleShot(0, this, [this] {
          panRedrawPending_ = false;
          if (!panning_ || picture_->panOffset().isNull()) return;
          const QPoint moved = picture_->panOffset();
          panFrom_ += moved;
          ShowView(PannedView(moved));
        });
      }
      return true;
    case QEvent::MouseButtonRelease: {
      if (!panning_ || !dragButton) return false;
      panning_ = false;
      picture_->unsetCursor();
      const QPoint moved = at - panFrom_;
      if (!moved.isNull()) ShowView(PannedView(moved));
      picture_->SetPanOffset({});
      return true;
    }
    default:
      return false;
  }
}

// The pointer's drawing coordinates, with the decimals one pixel is worth, and the zoom
// against the extents.
QString frmImport::coordinatesText() const { return coordinates_ ? coordinates_->text() : QString(); }

void frmImport::ShowCoordinates(std::optional<QPoint> at) {
  if (!coordinates_) return;
  if (!at || !booPictureLoaded || zoom_.Engine.ViewScale <= 0 || !picture_->rect().contains(*at)) {
    coordinates_->clear();
    return;
  }
  const PointD p = zoom_.DrawingPoint(at->x(), at->y());
  const int decimals = int(std::clamp(std::ceil(std::log10(zoom_.Engine.ViewScale)), 0.0, 8.0));
  // 100 % is the extents as they fill the picture.
  const ZoomRect& all = zoom_.ExtentsZoom;
  const ZoomRect& now = zoom_.CurrentZoom();
  const double aspect = double(picture_->width()) / std::max(1, picture_->height());
  const double extents = std::max(std::abs(all.right - all.left), std::abs(all.top - all.bottom) * aspect);
  const double zoom = now.right - now.left != 0 ? extents / (now.right - now.left) * 100 : 100;
  coordinates_->setText(QString::fromStdString(SubstituteArgs(
      LoadResText(1076),
      {QString::number(p.x, 'f', decimals).toStdString(), QString::number(p.y, 'f', decimals).toStdString(),
       QString::number(zoom, 'f', zoom < 10 ? 1 : 0).toStdString()})));
}

void frmImport::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) spaceDown_ = false;
  QMainWindow::keyReleaseEvent(event);
}

void frmImport::dragEnterEvent(QDragEnterEvent* event) {
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile() && IsDxfFile(url.toLocalFile())) return event->acceptProposedAction();
  }
}

void frmImport::dropEvent(QDropEvent* event) {
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile() && IsDxfFile(url.toLocalFile())) {
      event->acceptProposedAction();
      // Opened once the drop is over, so that the dragging application is not kept waiting.
      const QString file = url.toLocalFile();
      QTimer::singleShot(0, this, [this, file] { OpenFile(file); });
      return;
    }
  }
}

void frmImport::OpenFile(const QString& file) {
  if (Busy()) return;
  gstrDXFFileName = file.toStdString();
  FileOpen(false);
}

void frmImport::AddRecentFile(const std::string& file) {
  const QString path = QFileInfo(QString::fromStdString(file)).absoluteFilePath();
  recent_.removeAll(path);
  recent_.prepend(path);
  while (recent_.size() > kRecentCount) recent_.removeLast();
  Settings().setValue(kRecentSetting, recent_);
  FillRecentMenu();
}

void frmImport::FillRecentMenu() {
  if (!recentMenu_) return;
  recentMenu_->clear();
  for (int i = 0; i < recent_.size(); ++i) {
    QAction* item = recentMenu_->addAction(QString("&%1 %2").arg(i + 1).arg(recent_[i]));
    connect(item, &QAction::triggered, this, [this, file = recent_[i]] { OpenFile(file); });
  }
  recentMenu_->setEnabled(!recent_.isEmpty());
}

void frmImport::SaveWindowGeometry() { Settings().setValue(kGeometrySetting, saveGeometry()); }

void frmImport::mnuOptionSmooth_Click(bool checked) {
  zoom_.Display.Antialias = checked;
  Settings().setValue("Viewer/SmoothLines", checked);
  if (booPictureLoaded) ShowView(zoom_.CurrentZoom());
}

}  // namespace dxfimport
