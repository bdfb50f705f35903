#include "render/picture_stream.h"

#include <png.h>

#include <QtEndian>
#include <array>
#include <csetjmp>
#include <vector>

#include "render/redraw.h"
#include "render/world_file.h"

namespace dxfimport {
namespace {

int BitsPerPixel(QImage::Format format) {
  if (format == QImage::Format_Mono) return 1;
  if (format == QImage::Format_Indexed8) return 8;
  return 24;
}

// A Windows bitmap: the two headers and the colour table as they are written for a whole
// picture, then the rows bottom up, each padded to four bytes.
class BmpStream : public PictureStream {
 public:
  BmpStream(const QString& path, const Header& h) : PictureStream(path), header_(h) {}

  bool Begin() {
    const int bits = BitsPerPixel(header_.format);
    rowBytes_ = (int64_t(header_.size.width()) * bits + 31) / 32 * 4;
    const int64_t colors = bits == 24 ? 0 : header_.colors.size();
    const int64_t offset = 14 + 40 + 4 * colors;
    const int64_t image = rowBytes_ * header_.size.height();
    if (offset + image > 0xFFFFFFFFll || !file_.open(QIODevice::WriteOnly)) return false;
    std::vector<uchar> head(std::size_t(offset), 0);
    auto put16 = [&](int at, uint16_t v) { qToLittleEndian(v, head.data() + at); };
    auto put32 = [&](int at, uint32_t v) { qToLittleEndian(v, head.data() + at); };
    head[0] = 'B', head[1] = 'M';
    put32(2, uint32_t(offset + image));
    put32(10, uint32_t(offset));
    put32(14, 40);
    put32(18, uint32_t(header_.size.width()));
    put32(22, uint32_t(header_.size.height()));
    put16(26, 1);
    put16(28, uint16_t(bits));
    put32(34, uint32_t(image));
    put32(38, uint32_t(header_.dotsPerMetre));
    put32(42, uint32_t(header_.dotsPerMetre));
    put32(46, uint32_t(colors));
    put32(50, uint32_t(colors));
    for (int64_t i = 0; i < colors; ++i) {
      const QRgb c = header_.colors[i];
      uchar* at = head.data() + 54 + 4 * i;
      at[0] = uchar(qBlue(c)), at[1] = uchar(qGreen(c)), at[2] = uchar(qRed(c));
    }
    return file_.write(reinterpret_cast<const char*>(head.data()), qint64(head.size())) ==
           qint64(head.size());
  }

  bool BottomUp() const override { return true; }

  bool Write(const QImage& strip) override {
    std::vector<uchar> row(std::size_t(rowBytes_), 0);
    const int width = header_.size.width();
    for (int y = strip.height() - 1; y >= 0 && !failed_; --y) {
      const uchar* in = strip.constScanLine(y);
      if (header_.format == QImage::Format_RGB32) {
        for (int x = 0; x < width; ++x) std::copy_n(in + 4 * x, 3, row.data() + 3 * x);
      } else {
        std::copy_n(in, header_.format == QImage::Format_Mono ? (width + 7) / 8 : width, row.data());
      }
      failed_ = file_.write(reinterpret_cast<const char*>(row.data()), rowBytes_) != rowBytes_;
    }
    return !failed_;
  }

 private:
  Header header_;
  int64_t rowBytes_ = 0;
};

// A PNG through libpng, row by row: RGB, or a palette of 256 or 2 colours; the resolution
// in pHYs and the placement as a text chunk.
class PngStream : public PictureStream {
 public:
  PngStream(const QString& path, const Header& h) : PictureStream(path), header_(h) {}
  ~PngStream() override {
    if (png_) png_destroy_write_struct(&png_, &info_);
  }

  bool Begin() {
    if (!file_.open(QIODevice::WriteOnly)) return false;
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    if (png_) info_ = png_create_info_struct(png_);
    if (!info_) return false;
    placement_ = header_.placement.toUtf8();
    palette_.clear();
    for (QRgb c : header_.colors)
      palette_.push_back({png_byte(qRed(c)), png_byte(qGreen(c)), png_byte(qBlue(c))});
    return WriteHead();
  }

  bool BottomUp() const override { return false; }

  bool Write(const QImage& strip) override {
    if (failed_) return false;
    if (setjmp(png_jmpbuf(png_))) return !(failed_ = true);
    const QImage rows =
        header_.format == QImage::Format_ARGB32 ? strip.convertToFormat(QImage::Format_ARGB32) : strip;
    for (int y = 0; y < rows.height(); ++y) png_write_row(png_, rows.constScanLine(y));
    return true;
  }

  bool Commit() override {
    if (failed_) return PictureStream::Commit();
    if (setjmp(png_jmpbuf(png_)))
      failed_ = true;
    else
      png_write_end(png_, nullptr);
    return PictureStream::Commit();
  }

 private:
  static void Put(png_structp png, png_bytep data, png_size_t length) {
    auto* self = static_cast<PngStream*>(png_get_io_ptr(png));
    if (self->file_.write(reinterpret_cast<const char*>(data), qint64(length)) != qint64(length))
      png_error(png, "write failed");
  }
  static void Flush(png_structp) {}

  bool WriteHead() {
    if (setjmp(png_jmpbuf(png_))) return !(failed_ = true);
    png_set_write_fn(png_, this, &PngStream::Put, &PngStream::Flush);
    const bool alpha = header_.format == QImage::Format_ARGB32;
    const bool rgb = alpha || header_.format == QImage::Format_RGB32;
    const int depth = header_.format == QImage::Format_Mono ? 1 : 8;
    png_set_IHDR(png_, info_, png_uint_32(header_.size.width()), png_uint_32(header_.size.height()), depth,
                 alpha ? PNG_COLOR_TYPE_RGB_ALPHA
                 : rgb ? PNG_COLOR_TYPE_RGB
                       : PNG_COLOR_TYPE_PALETTE,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!rgb) png_set_PLTE(png_, info_, palette_.data(), int(palette_.size()));
    png_set_pHYs(png_, info_, png_uint_32(header_.dotsPerMetre), png_uint_32(header_.dotsPerMetre),
                 PNG_RESOLUTION_METER);
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = const_cast<char*>(kPlacementKey);
    text.text = placement_.data();
    text.text_length = std::size_t(placement_.size());
    if (!placement_.isEmpty()) png_set_text(png_, info_, &text, 1);
    png_write_info(png_, info_);
    if (rgb) {
      // QImage keeps RGB32 and ARGB32 pixels as B, G, R, then unused or alpha, in memory.
      png_set_bgr(png_);
      if (!alpha) png_set_filler(png_, 0, PNG_FILLER_AFTER);
    }
    return true;
  }

  Header header_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  QByteArray placement_;
  std::vector<png_color> palette_;
};

}  // namespace

PictureStream::Header PictureStream::HeaderFor(QSize size, ColorDepth depth, const LineArtInks& inks,
                                               double dpi, const QString& placement) {
  // The format and colour table a reduction gives, read off a one-pixel picture.
  const QImage sample = ReduceColors(QImage(1, 1, QImage::Format_RGB32), depth, inks);
  Header header{size, sample.format(), sample.colorTable(), 3780, placement};
  if (dpi > 0) header.dotsPerMetre = DotsPerMetre(dpi);
  return header;
}

std::unique_ptr<PictureStream> PictureStream::Open(const QString& path, const char* format,
                                                   const Header& header) {
  if (qstrcmp(format, "BMP") == 0) {
    auto stream = std::make_unique<BmpStream>(path, header);
    if (stream->Begin()) return stream;
  } else if (qstrcmp(format, "PNG") == 0) {
    auto stream = std::make_unique<PngStream>(path, header);
    if (stream->Begin()) return stream;
  } else if (qstrcmp(format, "TIFF") == 0) {
    return OpenTiffStream(path, header);
  }
  return nullptr;
}

bool PictureStream::Commit() {
  if (failed_) {
    file_.cancelWriting();
    return false;
  }
  return file_.commit();
}

bool WriteInStrips(ZoomState& zoom, QColor background, int32_t rows, ColorDepth depth,
                   const LineArtInks& inks, PictureStream& stream,
                   const std::function<void(int, int)>& progress) {
  const int32_t width = zoom.Engine.DeviceWidth, height = zoom.Engine.DeviceHeight;
  rows = std::clamp(rows, 1, height);
  const int count = int((height + rows - 1) / rows);
  for (int done = 0; done < count; ++done) {
    const int index = stream.BottomUp() ? count - 1 - done : done;
    const int32_t top = index * rows;
    QImage strip(width, std::min(rows, height - top), PictureFormat(background));
    if (strip.isNull() || !zoom.DrawStrip(strip, top, background) ||
        !stream.Write(ReduceColors(strip, depth, inks))) {
      stream.Cancel();
      return false;
    }
    if (progress) progress(done + 1, count);
  }
  return stream.Commit();
}

}  // namespace dxfimport
