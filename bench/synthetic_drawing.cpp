#include "synthetic_drawing.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

namespace dxfimport::bench {
namespace {

class Writer {
 public:
  explicit Writer(std::size_t reserve) { out_.reserve(reserve + (1 << 16)); }
  void Pair(int code, const char* value) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%3d\n", code);
    out_ += buf;
    out_ += value;
    out_ += '\n';
  }
  void Pair(int code, const std::string& value) { Pair(code, value.c_str()); }
  void Num(int code, double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.6f", v);
    Pair(code, buf);
  }
  void Int(int code, int v) { Pair(code, std::to_string(v)); }
  void Point(int base, double x, double y) {
    Num(base, x);
    Num(base + 10, y);
    Num(base + 20, 0.0);
  }
  std::size_t size() const { return out_.size(); }
  std::string take() { return std::move(out_); }

 private:
  std::string out_;
};

constexpr int kLayers = 24;
const char* const kBlocks[] = {"DESK", "OUTLET", "COLUMN"};

// Writes `text` to `dir`/`name` once (under a temporary name first); the path.
std::string WriteOnce(const std::string& dir, const std::string& name,
                      const std::function<std::string()>& text) {
  std::filesystem::create_directories(dir);
  const std::string path = dir + "/" + name;
  if (std::filesystem::exists(path)) return path;
  const std::string tmp = path + ".part";
  std::ofstream(tmp, std::ios::binary) << text();
  std::filesystem::rename(tmp, path);
  return path;
}

std::string LayerName(int i) { return "LAYER-" + std::to_string(i); }

void Tables(Writer& w) {
  w.Pair(0, "SECTION");
  w.Pair(2, "TABLES");
  w.Pair(0, "TABLE");
  w.Pair(2, "LAYER");
  w.Int(70, kLayers);
  for (int i = 0; i < kLayers; ++i) {
    w.Pair(0, "LAYER");
    w.Pair(2, LayerName(i));
    w.Int(70, 0);
    w.Int(62, 1 + i % 7);
    w.Pair(6, i % 3 ? "CONTINUOUS" : "DASHED");
  }
  w.Pair(0, "ENDTAB");
  w.Pair(0, "ENDSEC");
}

void Blocks(Writer& w) {
  w.Pair(0, "SECTION");
  w.Pair(2, "BLOCKS");
  for (const char* name : kBlocks) {
    w.Pair(0, "BLOCK");
    w.Pair(8, "0");
    w.Pair(2, name);
    w.Int(70, 0);
    w.Point(10, 0, 0);
    for (int i = 0; i < 4; ++i) {
      w.Pair(0, "LINE");
      w.Pair(8, "0");
      w.Point(10, i * 0.5, 0);
      w.Point(11, i * 0.5, 1.0);
    }
    w.Pair(0, "CIRCLE");
    w.Pair(8, "0");
    w.Point(10, 0.5, 0.5);
    w.Num(40, 0.25);
    w.Pair(0, "ENDBLK");
    w.Pair(8, "0");
  }
  w.Pair(0, "ENDSEC");
}

// The common head of an entity; R2000 adds the handle, owner and subclass markers.
void Entity(Writer& w, const char* kind, std::mt19937& rng, SyntheticStyle style,
            const char* subclass = nullptr) {
  static unsigned handle = 0x100;
  w.Pair(0, kind);
  if (style == SyntheticStyle::R2000) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "%X", handle++);
    w.Pair(5, hex);
    w.Pair(330, "1F");
    w.Pair(100, "AcDbEntity");
  }
  w.Pair(8, LayerName(int(rng() % kLayers)));
  if (rng() % 4 == 0) w.Int(62, int(rng() % 256));
  if (style == SyntheticStyle::R2000 && subclass) w.Pair(100, subclass);
}

void Entities(Writer& w, std::size_t bytes, std::mt19937& rng, SyntheticStyle style) {
  std::uniform_real_distribution<double> coord(0.0, 10000.0);
  std::uniform_real_distribution<double> small(0.5, 50.0);
  w.Pair(0, "SECTION");
  w.Pair(2, "ENTITIES");
  while (w.size() < bytes) {
    unsigned pick = rng() % 100;
    double x = coord(rng), y = coord(rng);
    if (pick < 50) {
      Entity(w, "LINE", rng, style, "AcDbLine");
      w.Point(10, x, y);
      w.Point(11, x + small(rng), y + small(rng));
    } else if (pick < 65 && style == SyntheticStyle::R2000) {
      Entity(w, "LWPOLYLINE", rng, style, "AcDbPolyline");
      int vertices = 4 + int(rng() % 7);
      w.Int(90, vertices);
      w.Int(70, int(rng() % 2));
      w.Num(43, 0.0);
      for (int v = 0; v < vertices; ++v) {
        w.Num(10, x + small(rng));
        w.Num(20, y + small(rng));
        if (rng() % 5 == 0) w.Num(42, 0.414214);
      }
    } else if (pick < 65) {
      Entity(w, "POLYLINE", rng, style);
      w.Int(66, 1);
      w.Int(70, int(rng() % 2));
      int vertices = 4 + int(rng() % 7);
      for (int v = 0; v < vertices; ++v) {
        w.Pair(0, "VERTEX");
        w.Pair(8, "0");
        w.Point(10, x + small(rng), y + small(rng));
        if (rng() % 5 == 0) w.Num(42, 0.414214);
      }
      w.Pair(0, "SEQEND");
      w.Pair(8, "0");
    } else if (pick < 72) {
      Entity(w, "ARC", rng, style, "AcDbCircle");
      w.Point(10, x, y);
      w.Num(40, small(rng));
      w.Num(50, double(rng() % 360));
      w.Num(51, double(rng() % 360));
    } else if (pick < 80) {
      Entity(w, "CIRCLE", rng, style, "AcDbCircle");
      w.Point(10, x, y);
      w.Num(40, small(rng));
    } else if (pick < 90) {
      Entity(w, "TEXT", rng, style, "AcDbText");
      w.Point(10, x, y);
      w.Num(40, 2.5);
      w.Pair(1, "Outlet N-" + std::to_string(rng() % 10000));
      w.Pair(7, "ROMANS");
    } else if (pick < 95) {
      Entity(w, "INSERT", rng, style, "AcDbBlockReference");
      w.Pair(2, kBlocks[rng() % 3]);
      w.Point(10, x, y);
      w.Num(41, 1.5);
      w.Num(42, 1.5);
      w.Num(50, double(rng() % 4) * 90.0);
    } else {
      Entity(w, "SOLID", rng, style, "AcDbTrace");
      w.Point(10, x, y);
      w.Point(11, x + 1, y);
      w.Point(12, x, y + 1);
      w.Point(13, x + 1, y + 1);
    }
  }
  w.Pair(0, "ENDSEC");
  w.Pair(0, "EOF");
}

}  // namespace

std::string SyntheticDrawing(std::size_t bytes, SyntheticStyle style) {
  std::mt19937 rng(20261122);
  Writer w(bytes);
  w.Pair(0, "SECTION");
  w.Pair(2, "HEADER");
  w.Pair(9, "$ACADVER");
  w.Pair(1, style == SyntheticStyle::R2000 ? "AC1015" : "AC1009");
  if (style == SyntheticStyle::R2000) {
    w.Pair(9, "$DWGCODEPAGE");
    w.Pair(3, "ANSI_1252");
  }
  w.Pair(0, "ENDSEC");
  Tables(w);
  Blocks(w);
  Entities(w, bytes, rng, style);
  return w.take();
}

std::string SyntheticDrawingFile(const std::string& dir, int megabytes, SyntheticStyle style) {
  const std::string kind = style == SyntheticStyle::R2000 ? "synthetic-r2000-" : "synthetic-";
  return WriteOnce(dir, kind + std::to_string(megabytes) + "mb.dxf",
                   [=] { return SyntheticDrawing(std::size_t(megabytes) << 20, style); });
}

std::string MTextDrawingFile(const std::string& dir, int count) {
  return WriteOnce(dir, "mtext-" + std::to_string(count) + ".dxf", [count] {
    static const char* const kLabels[] = {
        "Duct %d north entry to frame 4", "{\\C1;Cable %d} 24 fibres, spare 8",
        "Manhole %d\\~cover 600 x 600", "{\\H0.8x;Splice %d} closure in pit"};
    std::ostringstream out;
    out << "0\nSECTION\n2\nENTITIES\n";
    char label[96];
    for (int i = 0; i < count; ++i) {
      std::snprintf(label, sizeof label, kLabels[i % 4], i);
      out << "0\nMTEXT\n8\nLABELS\n10\n"
          << (i % 125) * 56 << "\n20\n"
          << (i / 125) * 12 << "\n40\n3.5\n41\n50\n71\n1\n1\n"
          << label << "\n";
    }
    out << "0\nENDSEC\n0\nEOF\n";
    return out.str();
  });
}

std::string SymbolGridDrawingFile(const std::string& dir) {
  return WriteOnce(dir, "symbol-grid-200000.dxf", [] {
    std::ostringstream out;
    out << "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nSYM\n10\n0\n20\n0\n";
    for (int i = 0; i < 40; ++i)
      out << "0\nLINE\n8\n0\n10\n" << i * 0.1 << "\n20\n0\n11\n" << i * 0.1 << "\n21\n1\n";
    for (int i = 0; i < 10; ++i) out << "0\nCIRCLE\n8\n0\n10\n0.5\n20\n0.5\n40\n" << 0.05 * (i + 1) << "\n";
    out << "0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n";
    for (int i = 0; i < 200000; ++i)
      out << "0\nINSERT\n8\nSYMBOLS\n2\nSYM\n10\n"
          << (i % 500) * 5 << "\n20\n"
          << (i / 500) * 5 << "\n50\n"
          << i % 360 << "\n";
    out << "0\nENDSEC\n0\nEOF\n";
    return out.str();
  });
}

std::string NestedBlocksDrawingFile(const std::string& dir) {
  return WriteOnce(dir, "nested-blocks-1e9.dxf", [] {
    std::ostringstream out;
    out << "0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n2\nB1\n10\n0\n20\n0\n";
    for (int i = 0; i < 10; ++i) out << "0\nLINE\n8\n0\n10\n" << i << "\n20\n0\n11\n" << i << "\n21\n1\n";
    out << "0\nENDBLK\n";
    for (int k = 2; k <= 9; ++k) {
      out << "0\nBLOCK\n2\nB" << k << "\n10\n0\n20\n0\n";
      for (int i = 0; i < 10; ++i) out << "0\nINSERT\n2\nB" << k - 1 << "\n10\n" << i * 10 << "\n20\n0\n";
      out << "0\nENDBLK\n";
    }
    out << "0\nENDSEC\n0\nSECTION\n2\nENTITIES\n0\nINSERT\n8\nSYMBOLS\n2\nB9\n10\n0\n20\n0\n"
        << "0\nLINE\n10\n0\n20\n0\n11\n100\n21\n100\n0\nCIRCLE\n10\n50\n20\n50\n40\n10\n0\nENDSEC\n0\nEOF\n";
    return out.str();
  });
}

}  // namespace dxfimport::bench
