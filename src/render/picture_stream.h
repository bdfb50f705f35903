#pragma once

#include <QImage>
#include <QSaveFile>
#include <QSize>
#include <QString>
#include <QVector>
#include <functional>
#include <memory>
#include <optional>

#include "render/color_depth.h"
#include "render/world_file.h"

namespace dxfimport {

class ZoomState;

// A BMP, PNG or TIFF file written a strip of rows at a time, so that a picture far larger than
// memory never exists whole. The file is written under a temporary name and renamed into
// place by Commit; a failure leaves nothing behind.
class PictureStream {
 public:
  struct Header {
    QSize size;                                    // the whole picture
    QImage::Format format = QImage::Format_RGB32;  // the strips': RGB32, Indexed8 or Mono
    QVector<QRgb> colors;                          // their colour table (indexed formats)
    int dotsPerMetre = 3780;                       // the resolution (3780: 96 dpi)
    QString placement;                             // the world file's text, kept in a PNG
    // A TIFF's placement (GeoTIFF tags), in the coordinates of `system` when it is known.
    std::optional<PicturePlacement> mapPlacement;
    Crs system;
  };

  // The header of a picture whose strips are reduced to `depth` (`dpi` 0: not said).
  static Header HeaderFor(QSize size, ColorDepth depth, const LineArtInks& inks, double dpi,
                          const QString& placement);

  // A stream for "BMP", "PNG" or "TIFF"; nullptr when the file cannot be made or the picture is
  // too large for the format (a BMP holds at most 4 GB).
  static std::unique_ptr<PictureStream> Open(const QString& path, const char* format, const Header& header);
  virtual ~PictureStream() = default;

  // Whether the file holds its rows bottom row first (BMP): its strips must then come
  // bottom strip first.
  virtual bool BottomUp() const = 0;
  // Appends the strip's rows (in the header's format and width).
  virtual bool Write(const QImage& strip) = 0;
  // Ends the file and puts it in place; false when any step failed.
  virtual bool Commit();
  // Leaves nothing behind.
  void Cancel() { file_.cancelWriting(); }

  QSaveFile& File() { return file_; }

 protected:
  explicit PictureStream(const QString& path) : file_(path) {}
  QSaveFile file_;
  bool failed_ = false;
};

// A tiled, DEFLATE-compressed TIFF written a row of tiles at a time as strips arrive: RGB
// (or the palette of an indexed picture), with GeoTIFF tags when the header places it
// (the tie point and pixel size, or the whole transformation when it is turned, and the
// keys of the system's EPSG code). nullptr when the file cannot be made (tiff_stream.cpp).
std::unique_ptr<PictureStream> OpenTiffStream(const QString& path, const PictureStream::Header& header);

// Draws the view `zoom` was placed on (PlaceView) `rows` rows at a time, each strip
// reduced to `depth` and handed to `stream` in the order it wants, which is then
// committed. `progress` (optional) hears the strips done and their count. False when
// drawing or writing failed; the stream is then cancelled.
bool WriteInStrips(ZoomState& zoom, QColor background, int32_t rows, ColorDepth depth,
                   const LineArtInks& inks, PictureStream& stream,
                   const std::function<void(int, int)>& progress = {});

}  // namespace dxfimport
