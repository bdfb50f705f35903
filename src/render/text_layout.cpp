// Text layout of the modern profile: TEXT and ATTRIB as one line placed by their
// justification, MTEXT as paragraphs wrapped at their reference width, in columns, placed
// by their attachment point. Heights are heights of capitals; one line follows another at
// 5/3 of the text height times the spacing factor.
#include "render/text_layout.h"

#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "dxf/model/geometry.h"
#include "dxf/model/text_styles.h"

namespace dxfimport {
namespace {

constexpr int kReferencePixels = 96;  // the em of the reference size
constexpr double kLineSpacing = 5.0 / 3.0;
constexpr double kStackSize = 0.7;  // stacked parts, of the text around them
constexpr double kTabStop = 4;      // default tab stops, in text heights

// The family a face named inside MTEXT (\f, \F) is drawn in.
std::string FamilyOf(const TextFormat& format, const std::string& base) {
  if (format.face.empty()) return base;
  if (format.stroke) return std::string(kStrokeStandIn);
  return FaceOfFont(format.face, format.face.find('.') == std::string::npos ? format.face : "").face;
}

}  // namespace

// Flows the pieces of paragraphs into lines and the lines into columns, then shapes each
// line's runs.
class TextComposer {
 public:
  struct Settings {
    std::string face;   // the text's face
    double height = 1;  // the text's height (of a capital), frame units
    double widthFactor = 1;
    double oblique = 0;    // degrees
    double wrap = 0;       // reference width; 0: no wrapping
    int8_t alignment = 0;  // 0 left, 1 centre, 2 right: paragraphs without their own
    double spacing = 1;    // line spacing factor
    bool exactSpacing = false;
    double columnHeight = 0;  // a column holds lines down to this depth (0: one column)
    double columnStep = 0;    // from one column to the next
  };

  TextComposer(TextLayouts& faces, const Settings& s) : faces_(faces), s_(s) {}

  // Lays out the paragraphs with the top of the first line at y = 0 and the left edge at
  // x = 0. The layout's box spans the lines (and the reference width).
  void Compose(const std::vector<TextParagraph>& paragraphs, TextLayout& out);

 private:
  struct Item {
    const TextPiece* piece;
    const TextLayouts::Face* face;
    double x = 0, width = 0;
    double size = 0;  // cap height in frame units
    bool space = false;
  };
  struct Line {
    std::vector<Item> items;
    double width = 0, indent = 0, right = 0;
    double size = 0;  // the largest cap height on the line
    int8_t alignment = 0;
    bool last = false, columnBreak = false;
  };

  Item Measure(const TextPiece& piece) const;
  double Advance(const TextLayouts::Face& face, const std::string& text, double size,
                 const TextFormat& f) const;
  void Finish(Line& line);
  void Place(std::vector<Line>& lines, TextLayout& out);
  void Shape(const Line& line, double baseline, double dx, TextLayout& out);
  void AddRun(const Item& first, const std::string& text, double x, double baseline, double size,
              TextLayout& out) const;

  TextLayouts& faces_;
  Settings s_;
  std::vector<Line> lines_;
};

TextComposer::Item TextComposer::Measure(const TextPiece& piece) const {
  const TextFormat& f = piece.format;
  const TextLayouts::Face& face = faces_.FaceOf(FamilyOf(f, s_.face), f.bold, f.italic, f.tracking);
  Item item{&piece, &face};
  item.size = s_.height * f.height;
  switch (piece.kind) {
    case TextPiece::Kind::Word:
      item.width = Advance(face, piece.text, item.size, f);
      break;
    case TextPiece::Kind::Space:
      item.width = Advance(face, " ", item.size, f), item.space = true;
      break;
    case TextPiece::Kind::Tab:
      break;
    case TextPiece::Kind::Stack: {
      const double part = item.size * kStackSize;
      const double upper = Advance(face, piece.text, part, f), lower = Advance(face, piece.lower, part, f);
      item.width = piece.stack == '#' ? upper + lower + part * 0.5 : std::max(upper, lower) + part * 0.2;
      break;
    }
  }
  return item;
}

double TextComposer::Advance(const TextLayouts::Face& face, const std::string& text, double size,
                             const TextFormat& f) const {
  const QFontMetricsF metrics(face.font);
  return metrics.horizontalAdvance(QString::fromStdString(text)) * size / face.cap * s_.widthFactor *
         f.widthFactor;
}

void TextComposer::Finish(Line& line) {
  while (!line.items.empty() && line.items.back().space) line.items.pop_back();
  line.width = line.items.empty() ? 0 : line.items.back().x + line.items.back().width - line.indent;
  line.size = 0;
  for (const Item& item : line.items) line.size = std::max(line.size, item.size);
  if (line.size == 0) line.size = s_.height;
  lines_.push_back(std::move(line));
}

void TextComposer::Compose(const std::vector<TextParagraph>& paragraphs, TextLayout& out) {
  for (const TextParagraph& p : paragraphs) {
    const double h = s_.height;
    const double left = p.indentLeft * h, right = p.indentRight * h;
    Line line;
    line.indent = (p.indentLeft + p.indentFirst) * h;
    line.right = right;
    line.alignment = p.alignment >= 0 ? p.alignment : s_.alignment;
    line.columnBreak = p.columnBreak;
    double x = line.indent;
    for (const TextPiece& piece : p.pieces) {
      Item item = Measure(piece);
      if (item.space) {
        if (!line.items.empty()) {
          item.x = x;
          line.items.push_back(item);
          x += item.width;
        }
        continue;
      }
      if (piece.kind == TextPiece::Kind::Tab) {
        double stop = 0;
        for (double t : p.tabs)
          if (t * h > x + 1e-9) {
            stop = t * h;
            break;
          }
        if (stop == 0) stop = (std::floor(x / (kTabStop * h)) + 1) * kTabStop * h;
        x = stop;
        continue;
      }
      if (s_.wrap > 0 && !line.items.empty() && x + item.width > s_.wrap - right + 1e-9) {
        Line next;
        next.indent = left, next.right = right, next.alignment = line.alignment;
        Finish(line);
        line = std::move(next);
        x = left;
      }
      item.x = x;
      line.items.push_back(item);
      x += item.width;
    }
    line.last = true;
    Finish(line);
  }
  Place(lines_, out);
}

// Baselines down the column, columns side by side; each line aligned in its column.
void TextComposer::Place(std::vector<Line>& lines, TextLayout& out) {
  double columnWidth = s_.wrap;
  if (!(columnWidth > 0))
    for (const Line& l : lines) columnWidth = std::max(columnWidth, l.indent + l.width + l.right);
  double baseline = 0, bottom = 0, columnX = 0;
  bool first = true;
  for (Line& line : lines) {
    const double gap =
        kLineSpacing * s_.spacing * (s_.exactSpacing ? s_.height : std::max(line.size, s_.height));
    const bool nextColumn =
        !first && s_.columnStep > 0 &&
        (line.columnBreak || (s_.columnHeight > 0 && -(baseline - gap) > s_.columnHeight));
    if (nextColumn) {
      columnX += s_.columnStep;
      first = true;
    }
    baseline = first ? -line.size : baseline - gap;
    first = false;
    const double free = columnWidth - line.right - line.indent - line.width;
    double dx = columnX;
    if (line.alignment == 1)
      dx += free / 2;
    else if (line.alignment == 2)
      dx += free;
    if (line.alignment == 3 && !line.last && free > 0) {
      // Justified: the free room goes to the spaces.
      int spaces = 0;
      for (const Item& item : line.items) spaces += item.space;
      double shift = 0;
      for (Item& item : line.items) {
        item.x += shift;
        if (item.space && spaces > 0) shift += free / spaces;
      }
    }
    Shape(line, baseline, dx, out);
    bottom = std::min(bottom, baseline - line.size * 0.31);
  }
  out.box = QRectF(QPointF(0, bottom), QPointF(std::max(columnX + columnWidth, 0.0), 0)).normalized();
}

void TextComposer::AddRun(const Item& first, const std::string& text, double x, double baseline, double size,
                          TextLayout& out) const {
  if (text.empty()) return;
  const TextFormat& f = first.piece->format;
  QTextLayout layout(QString::fromStdString(text), first.face->font);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  line.setLineWidth(1e9);
  layout.endLayout();
  const double scale = size / first.face->cap;
  const double stretch = s_.widthFactor * f.widthFactor;
  const double shear = std::tan(Radians(std::clamp(s_.oblique + f.oblique, -85.0, 85.0)));
  for (QGlyphRun glyphs : layout.glyphRuns()) {
    QVector<QPointF> positions = glyphs.positions();
    for (QPointF& p : positions) p.ry() -= line.ascent();
    glyphs.setPositions(positions);
    out.runs.push_back({glyphs, QPointF(x, baseline), scale, stretch, shear, f.color});
  }
  const double end = x + line.naturalTextWidth() * scale * stretch;
  auto stroke = [&](double at) {
    out.strokes.push_back({QLineF(x, baseline + at, end, baseline + at), f.color});
  };
  if (f.underline) stroke(-size * 0.2);
  if (f.overline) stroke(size * 1.25);
  if (f.strike) stroke(size * 0.5);
}

// The line's items as runs: words of one format and the spaces between them shaped
// together; stacks as their two parts (and bar).
void TextComposer::Shape(const Line& line, double baseline, double dx, TextLayout& out) {
  std::size_t i = 0;
  while (i < line.items.size()) {
    const Item& item = line.items[i];
    const TextFormat& f = item.piece->format;
    const double lift = f.align == 0 ? 0 : (line.size - item.size) * (f.align == 1 ? 0.5 : 1.0);
    if (item.piece->kind == TextPiece::Kind::Stack) {
      const TextPiece& p = *item.piece;
      const double part = item.size * kStackSize, bar = baseline + lift + item.size * 0.45;
      const double x = item.x + dx;
      if (p.stack == '#') {
        const double upper = Advance(*item.face, p.text, part, f);
        AddRun(item, p.text, x, bar + part * 0.1, part, out);
        AddRun(item, p.lower, x + upper + part * 0.5, bar - part * 1.1, part, out);
        out.strokes.push_back({QLineF(x + upper, bar - part, x + upper + part * 0.5, bar + part), f.color});
      } else {
        const double upper = Advance(*item.face, p.text, part, f),
                     lower = Advance(*item.face, p.lower, part, f);
        AddRun(item, p.text, x + (item.width - upper) / 2, bar + part * 0.25, part, out);
        AddRun(item, p.lower, x + (item.width - lower) / 2, bar - part * 1.25, part, out);
        if (p.stack == '/') out.strokes.push_back({QLineF(x, bar, x + item.width, bar), f.color});
      }
      ++i;
      continue;
    }
    // Words (and the spaces between them) that share a format and follow one another.
    std::string text = item.piece->text;
    std::size_t j = i + 1;
    const bool justified = line.alignment == 3 && !line.last;
    while (j < line.items.size() && !justified) {
      const Item& next = line.items[j];
      const TextPiece& np = *next.piece;
      if (np.kind == TextPiece::Kind::Stack || next.face != item.face || next.size != item.size ||
          np.format.color != f.color || np.format.widthFactor != f.widthFactor ||
          np.format.oblique != f.oblique || np.format.underline != f.underline ||
          np.format.overline != f.overline || np.format.strike != f.strike || np.format.align != f.align ||
          std::abs(next.x - (line.items[j - 1].x + line.items[j - 1].width)) > 1e-9)
        break;
      text += np.text;
      ++j;
    }
    AddRun(item, text, item.x + dx, baseline + lift, item.size, out);
    i = j;
  }
}

const TextLayouts::Face& TextLayouts::FaceOf(const std::string& family, bool bold, bool italic,
                                             double tracking) {
  const std::string key = family + (bold ? "|b" : "|") + (italic ? "i" : "") + "|" + std::to_string(tracking);
  auto found = faces_.find(key);
  if (found != faces_.end()) return found->second;
  Face face;
  face.font = QFont(QString::fromStdString(family.empty() ? std::string(kStrokeStandIn) : family));
  face.font.setPixelSize(kReferencePixels);
  face.font.setBold(bold);
  face.font.setItalic(italic);
  face.font.setHintingPreference(QFont::PreferNoHinting);
  face.font.setKerning(true);
  if (tracking != 1 && tracking > 0) face.font.setLetterSpacing(QFont::PercentageSpacing, tracking * 100);
  const QFontMetricsF metrics(face.font);
  face.cap = metrics.capHeight() > 0 ? metrics.capHeight() : metrics.ascent() * 0.7;
  face.ascent = metrics.ascent();
  face.descent = metrics.descent();
  return faces_.emplace(key, face).first->second;
}

void TextLayouts::Forget(const Drawing& drawing) {
  if (drawing_ == &drawing && generation_ == drawing.Generation()) return;
  drawing_ = &drawing;
  generation_ = drawing.Generation();
  for (auto& kind : layouts_) kind.clear();
}

std::unique_ptr<TextLayout>& TextLayouts::Slot(int32_t kind, int32_t row) {
  std::vector<std::unique_ptr<TextLayout>>& table = layouts_[kind == kKindText     ? 0
                                                             : kind == kKindAttrib ? 1
                                                                                   : 2];
  if (std::size_t(row) >= table.size()) table.resize(std::size_t(row) + 1);
  return table[std::size_t(row)];
}

QTransform TextLayouts::FrameTransform(const TextLayout& l) {
  QTransform t;
  t.translate(l.x, l.y);
  t.rotate(l.rotation);
  t.scale(l.backward ? -1 : 1, l.upsideDown ? -1 : 1);
  return t;
}

const TextLayout& TextLayouts::Of(const TextEntity& text, int32_t kind, int32_t row, const Drawing& drawing) {
  std::lock_guard held(fonts_);
  Forget(drawing);
  std::unique_ptr<TextLayout>& slot = Slot(kind, row);
  if (!slot) slot = std::make_unique<TextLayout>(LayOutText(text, drawing));
  return *slot;
}

const TextLayout& TextLayouts::Of(const MTextEntity& text, int32_t row, const Drawing& drawing) {
  std::lock_guard held(fonts_);
  Forget(drawing);
  std::unique_ptr<TextLayout>& slot = Slot(kKindMText, row);
  if (!slot) slot = std::make_unique<TextLayout>(LayOutMText(text, drawing));
  return *slot;
}

// TEXT: one line at its point; the horizontal justification (72) puts the point at the
// line's left, centre or right, an aligned text (3) is scaled and a fitted one (5)
// stretched to run between its two points; the vertical one (73) on the baseline, the
// bottom, the middle or the top.
TextLayout TextLayouts::LayOutText(const TextEntity& t, const Drawing& drawing) {
  TextLayout out;
  const TextStyle* style = t.Style >= 1 && std::size_t(t.Style) <= drawing.TextStyles.size()
                               ? &drawing.TextStyles[std::size_t(t.Style - 1)]
                               : nullptr;
  TextComposer::Settings s;
  s.face = t.FontName;
  s.height = std::abs(t.Height);
  s.widthFactor = t.WidthFactor > 0 ? t.WidthFactor : 1;
  s.oblique = t.Oblique;
  std::vector<TextParagraph> paragraphs = ParseMText(t.Text, s.height);
  // One line: further paragraphs (line ends in the value) run on after a space.
  for (std::size_t i = 1; i < paragraphs.size(); ++i) {
    TextPiece space;
    space.kind = TextPiece::Kind::Space;
    space.text = " ";
    paragraphs[0].pieces.push_back(space);
    paragraphs[0].pieces.insert(paragraphs[0].pieces.end(), paragraphs[i].pieces.begin(),
                                paragraphs[i].pieces.end());
  }
  paragraphs.resize(std::min<std::size_t>(paragraphs.size(), 1));
  // A vertical style stacks the characters downwards, each centred under the point.
  const bool vertical = style && style->Vertical && !paragraphs.empty();
  if (vertical) {
    std::vector<TextParagraph> column;
    for (const TextPiece& piece : paragraphs[0].pieces) {
      if (piece.kind != TextPiece::Kind::Word) continue;
      for (std::size_t i = 0; i < piece.text.size();) {
        const auto lead = static_cast<unsigned char>(piece.text[i]);
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        TextParagraph p;
        TextPiece one = piece;
        one.text = piece.text.substr(i, length);
        p.pieces.push_back(one);
        p.alignment = 1;
        column.push_back(std::move(p));
        i += length;
      }
    }
    paragraphs = std::move(column);
  }
  out.x = t.X, out.y = t.Y, out.rotation = t.Rotation;
  const double span = std::hypot(t.AlignX - t.X, t.AlignY - t.Y);
  const bool twoPoints = (t.HorzJustify == 3 || t.HorzJustify == 5) && span > 0;
  if (twoPoints) out.rotation = Degrees(std::atan2(t.AlignY - t.Y, t.AlignX - t.X));
  if (twoPoints) {
    // Measure once, then scale (aligned) or stretch (fitted) to the span.
    TextLayout probe;
    TextComposer(*this, s).Compose(paragraphs, probe);
    const double natural = probe.box.width();
    if (natural > 0) {
      if (t.HorzJustify == 3)
        s.height *= span / natural;
      else
        s.widthFactor *= span / natural;
    }
  }
  TextComposer(*this, s).Compose(paragraphs, out);
  // The composer puts the top of the capitals at 0: move the baseline there, then by the
  // justification.
  const double h = s.height;
  const double width = out.box.width();
  double dx = 0, dy = h;
  if (!twoPoints && !vertical) {
    if (t.HorzJustify == 1 || t.HorzJustify == 4)
      dx = -width / 2;
    else if (t.HorzJustify == 2)
      dx = -width;
  }
  const Face& face = FaceOf(s.face, false, false, 1);
  switch (t.VertJustify) {
    case 1:
      dy += face.descent / face.cap * h;
      break;
    case 2:
      dy -= h / 2;
      break;
    case 3:
      dy -= h;
      break;
    default:
      if (t.HorzJustify == 4) dy -= h / 2;
      break;
  }
  if (vertical) dx = -width / 2, dy = 0;
  for (TextLayout::Run& r : out.runs) r.origin += QPointF(dx, dy);
  for (TextLayout::Stroke& st : out.strokes) st.line.translate(dx, dy);
  out.box.translate(dx, dy);
  out.height = h;
  out.backward = (t.Mirror & kTextBackward) != 0;
  out.upsideDown = (t.Mirror & kTextUpsideDown) != 0;
  return out;
}

// MTEXT: paragraphs wrapped at the reference width (in columns when it has them), the
// attachment point (71) at the top, middle or bottom and left, centre or right of the
// text, its background filled.
TextLayout TextLayouts::LayOutMText(const MTextEntity& m, const Drawing& drawing) {
  TextLayout out;
  const TextStyle* style = m.Style >= 1 && std::size_t(m.Style) <= drawing.TextStyles.size()
                               ? &drawing.TextStyles[std::size_t(m.Style - 1)]
                               : nullptr;
  TextComposer::Settings s;
  // The style gives the face; its width factor and oblique angle are those of TEXT
  // (MTEXT carries its own as inline codes).
  s.face = style ? style->Face : std::string(kStrokeStandIn);
  s.height = std::abs(m.Height);
  s.alignment = int8_t((m.Attachment - 1) % 3);
  s.spacing = m.SpacingFactor;
  s.exactSpacing = m.SpacingStyle == 2;
  const bool columns = m.ColumnKind > 0 && m.ColumnWidth > 0;
  s.wrap = columns ? m.ColumnWidth : m.Width;
  if (columns) {
    s.columnStep = m.ColumnWidth + m.ColumnGutter;
    s.columnHeight = m.ColumnHeight;
  }
  TextComposer(*this, s).Compose(ParseMText(m.Content, s.height), out);
  // The attachment point: the box's top, middle or bottom, left, centre or right (the
  // frame's y grows upwards: the box's top() is its lowest y).
  const int column = (m.Attachment - 1) % 3, row = (m.Attachment - 1) / 3;
  const QRectF box = out.box;
  const double dx = -box.left() - column * box.width() / 2;
  const double dy = -(row == 0 ? box.bottom() : row == 1 ? (box.top() + box.bottom()) / 2 : box.top());
  for (TextLayout::Run& r : out.runs) r.origin += QPointF(dx, dy);
  for (TextLayout::Stroke& st : out.strokes) st.line.translate(dx, dy);
  out.box.translate(dx, dy);
  if (m.FillFlags & 3) {
    const double margin = std::max(0.0, m.FillScale - 1) * s.height;
    out.fill = out.box.adjusted(-margin, -margin, margin, margin);
    out.fillBackground = (m.FillFlags & 2) != 0;
    out.fillColor = m.FillColor;
  }
  out.height = s.height;
  out.x = m.X, out.y = m.Y, out.rotation = m.Rotation;
  out.backward = (m.Mirror & kTextBackward) != 0;
  out.upsideDown = (m.Mirror & kTextUpsideDown) != 0;
  return out;
}

}  // namespace dxfimport
