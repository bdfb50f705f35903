// TIFF through libtiff over the stream's file (so that a failure leaves nothing behind),
// GeoTIFF tags through libgeotiff.
#include <geotiff/geotiff.h>
#include <geotiff/geovalues.h>
#include <geotiff/xtiffio.h>
#include <tiffio.h>

#include <cstring>
#include <vector>

#include "render/picture_stream.h"

namespace dxfimport {
namespace {

constexpr int kTile = 256;

class TiffStream : public PictureStream {
 public:
  TiffStream(const QString& path, const Header& h) : PictureStream(path), header_(h) {}
  ~TiffStream() override {
    if (tiff_) XTIFFClose(tiff_);
  }

  bool Begin() {
    if (!File().open(QIODevice::WriteOnly)) return false;
    // BigTIFF only for what a classic TIFF's 4 GB of offsets cannot hold.
    const double bytes = double(header_.size.width()) * header_.size.height() * 4;
    tiff_ = XTIFFClientOpen(File().fileName().toLocal8Bit().constData(), bytes < 3.5e9 ? "w" : "w8", this,
                            &TiffStream::Read, &TiffStream::Put, &TiffStream::Seek, &TiffStream::Close,
                            &TiffStream::Size, &TiffStream::Map, &TiffStream::Unmap);
    if (!tiff_) return false;
    alpha_ = header_.format == QImage::Format_ARGB32;
    rgb_ = alpha_ || header_.format == QImage::Format_RGB32;
    samples_ = alpha_ ? 4 : rgb_ ? 3 : 1;
    width_ = header_.size.width();
    band_.assign(std::size_t(width_) * kTile * samples_, 0);
    return WriteHead();
  }

  bool BottomUp() const override { return false; }

  // Rows gather in a band one tile high; each full band is written as a row of tiles.
  bool Write(const QImage& strip) override {
    if (failed_) return false;
    const QImage rows = strip.format() == QImage::Format_Mono ? strip.convertToFormat(QImage::Format_Indexed8)
                        : alpha_                              ? strip.convertToFormat(QImage::Format_ARGB32)
                                                              : strip;
    for (int y = 0; y < rows.height(); ++y) {
      uint8_t* out = band_.data() + std::size_t(bandRows_) * width_ * samples_;
      const uchar* in = rows.constScanLine(y);
      if (rgb_) {
        const QRgb* pixels = reinterpret_cast<const QRgb*>(in);
        for (int x = 0; x < width_; ++x, out += samples_) {
          out[0] = uint8_t(qRed(pixels[x])), out[1] = uint8_t(qGreen(pixels[x])),
          out[2] = uint8_t(qBlue(pixels[x]));
          if (alpha_) out[3] = uint8_t(qAlpha(pixels[x]));
        }
      } else {
        std::memcpy(out, in, std::size_t(width_));
      }
      if (++bandRows_ == kTile && !FlushBand()) return false;
    }
    return true;
  }

  bool Commit() override {
    if (!failed_ && bandRows_ > 0) FlushBand();
    if (tiff_) {
      if (!failed_ && !TIFFWriteDirectory(tiff_)) failed_ = true;
      XTIFFClose(tiff_);
      tiff_ = nullptr;
    }
    return PictureStream::Commit();
  }

 private:
  bool WriteHead() {
    TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, uint32_t(width_));
    TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, uint32_t(header_.size.height()));
    TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, uint16_t(samples_));
    TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, uint16_t(8));
    TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    // A picture smaller than a tile is kept in strips of a tile's height: some readers
    // (Qt's) cannot take a tile larger than the picture.
    tiled_ = width_ >= kTile && header_.size.height() >= kTile;
    if (tiled_) {
      TIFFSetField(tiff_, TIFFTAG_TILEWIDTH, uint32_t(kTile));
      TIFFSetField(tiff_, TIFFTAG_TILELENGTH, uint32_t(kTile));
    } else {
      TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, uint32_t(kTile));
    }
    TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff_, TIFFTAG_PREDICTOR, rgb_ ? PREDICTOR_HORIZONTAL : PREDICTOR_NONE);
    TIFFSetField(tiff_, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    TIFFSetField(tiff_, TIFFTAG_XRESOLUTION, float(header_.dotsPerMetre / 100.0));
    TIFFSetField(tiff_, TIFFTAG_YRESOLUTION, float(header_.dotsPerMetre / 100.0));
    if (rgb_) {
      TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
      if (alpha_) {
        uint16_t extra[] = {EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tiff_, TIFFTAG_EXTRASAMPLES, uint16_t(1), extra);
      }
    } else {
      TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
      std::vector<uint16_t> r(256, 0), g(256, 0), b(256, 0);
      for (int i = 0; i < header_.colors.size() && i < 256; ++i) {
        const QRgb c = header_.colors[i];
        r[std::size_t(i)] = uint16_t(qRed(c) * 257), g[std::size_t(i)] = uint16_t(qGreen(c) * 257),
        b[std::size_t(i)] = uint16_t(qBlue(c) * 257);
      }
      TIFFSetField(tiff_, TIFFTAG_COLORMAP, r.data(), g.data(), b.data());
    }
    if (header_.mapPlacement) WritePlacement(*header_.mapPlacement);
    return true;
  }

  // The picture's corner and pixel size (PixelIsArea: the tie point is the top-left
  // pixel's corner), or the whole map from pixels when the picture is turned; then the
  // system's keys.
  void WritePlacement(const PicturePlacement& p) {
    const double cornerX = p.CentreX - (p.PixelWidth + p.RotationX) / 2;
    const double cornerY = p.CentreY - (p.RotationY + p.PixelHeight) / 2;
    if (p.RotationX == 0 && p.RotationY == 0) {
      double tie[6] = {0, 0, 0, cornerX, cornerY, 0};
      double scale[3] = {p.PixelWidth, -p.PixelHeight, 0};
      TIFFSetField(tiff_, TIFFTAG_GEOTIEPOINTS, 6, tie);
      TIFFSetField(tiff_, TIFFTAG_GEOPIXELSCALE, 3, scale);
    } else {
      double m[16] = {p.PixelWidth,
                      p.RotationX,
                      0,
                      cornerX,
                      p.RotationY,
                      p.PixelHeight,
                      0,
                      cornerY,
                      0,
                      0,
                      0,
                      0,
                      0,
                      0,
                      0,
                      1};
      TIFFSetField(tiff_, TIFFTAG_GEOTRANSMATRIX, 16, m);
    }
    GTIF* keys = GTIFNew(tiff_);
    if (!keys) return;
    GTIFKeySet(keys, GTRasterTypeGeoKey, TYPE_SHORT, 1, RasterPixelIsArea);
    if (header_.system.Epsg > 0 && header_.system.Epsg < 65536) {
      if (header_.system.Geographic) {
        GTIFKeySet(keys, GTModelTypeGeoKey, TYPE_SHORT, 1, ModelTypeGeographic);
        GTIFKeySet(keys, GeographicTypeGeoKey, TYPE_SHORT, 1, header_.system.Epsg);
      } else {
        GTIFKeySet(keys, GTModelTypeGeoKey, TYPE_SHORT, 1, ModelTypeProjected);
        GTIFKeySet(keys, ProjectedCSTypeGeoKey, TYPE_SHORT, 1, header_.system.Epsg);
      }
    }
    GTIFWriteKeys(keys);
    GTIFFree(keys);
  }

  bool FlushBand() {
    const std::size_t rowBytes = std::size_t(width_) * samples_;
    if (!tiled_) {
      if (TIFFWriteEncodedStrip(tiff_, uint32_t(bandTop_ / kTile), band_.data(),
                                tmsize_t(rowBytes * bandRows_)) < 0)
        return !(failed_ = true);
      bandTop_ += bandRows_;
      bandRows_ = 0;
      return true;
    }
    std::vector<uint8_t> tile(std::size_t(kTile) * kTile * samples_, 0);
    for (int x0 = 0; x0 < width_; x0 += kTile) {
      const int columns = std::min(kTile, width_ - x0);
      std::fill(tile.begin(), tile.end(), 0);
      for (int y = 0; y < bandRows_; ++y)
        std::memcpy(tile.data() + std::size_t(y) * kTile * samples_,
                    band_.data() + std::size_t(y) * rowBytes + std::size_t(x0) * samples_,
                    std::size_t(columns) * samples_);
      if (TIFFWriteTile(tiff_, tile.data(), uint32_t(x0), uint32_t(bandTop_), 0, 0) < 0)
        return !(failed_ = true);
    }
    bandTop_ += bandRows_;
    bandRows_ = 0;
    return true;
  }

  static TiffStream* Self(thandle_t h) { return static_cast<TiffStream*>(h); }
  static tmsize_t Read(thandle_t h, void* data, tmsize_t n) {
    return tmsize_t(Self(h)->File().read(static_cast<char*>(data), qint64(n)));
  }
  static tmsize_t Put(thandle_t h, void* data, tmsize_t n) {
    return tmsize_t(Self(h)->File().write(static_cast<const char*>(data), qint64(n)));
  }
  static toff_t Seek(thandle_t h, toff_t offset, int whence) {
    QSaveFile& f = Self(h)->File();
    const qint64 base = whence == SEEK_CUR ? f.pos() : whence == SEEK_END ? f.size() : 0;
    return f.seek(base + qint64(offset)) ? toff_t(f.pos()) : toff_t(-1);
  }
  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t h) { return toff_t(Self(h)->File().size()); }
  static int Map(thandle_t, void**, toff_t*) { return 0; }
  static void Unmap(thandle_t, void*, toff_t) {}

  Header header_;
  TIFF* tiff_ = nullptr;
  bool rgb_ = true, alpha_ = false, tiled_ = true;
  int samples_ = 3, width_ = 0;
  std::vector<uint8_t> band_;
  int bandRows_ = 0, bandTop_ = 0;
};

}  // namespace

std::unique_ptr<PictureStream> OpenTiffStream(const QString& path, const PictureStream::Header& header) {
  auto stream = std::make_unique<TiffStream>(path, header);
  if (!stream->Begin()) return nullptr;
  return stream;
}

}  // namespace dxfimport
