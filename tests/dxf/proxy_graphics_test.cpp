// Proxy graphics: the stream decoder, and entities of unknown classes drawn from it.
#include "dxf/input/proxy_graphics.h"

#include <gtest/gtest.h>

#include <cmath>

#include "dxf/model/mtext.h"
#include "testing/dxf_fixture.h"
#include "testing/proxy_stream.h"

namespace dxfimport::testing {
namespace {

constexpr int32_t kCircle = 2, kArc3P = 5, kPolyline = 6, kPolygon = 7, kShell = 9, kColor = 14, kLayer = 16,
                  kFill = 20, kTrueColor = 22, kPush = 29, kPop = 31, kLwPolyline = 33, kUnicodeText2 = 38;

ProxyData Translation(double dx, double dy) {
  ProxyData m;
  const double rows[16] = {1, 0, 0, dx, 0, 1, 0, dy, 0, 0, 1, 0, 0, 0, 0, 1};
  for (double v : rows) m.Real(v);
  return m;
}

ProxyData TwoPoints(double x1, double y1, double x2, double y2) {
  return ProxyData().Int(2).Point(x1, y1).Point(x2, y2);
}

TEST(ProxyGraphics, DecodesShapesUnderTheirPenAndTransforms) {
  ProxyStream stream;
  stream.Add(kLayer, ProxyData().Int(2))
      .Add(kColor, ProxyData().Int(1))
      .Add(kPush, Translation(100, 0))
      .Add(kPolyline, TwoPoints(0, 0, 10, 0))
      .Add(kPop)
      .Add(kTrueColor, ProxyData().Int(int32_t(0xC2102030)))
      .Add(kFill, ProxyData().Int(1))
      .Add(kPolygon, ProxyData().Int(3).Point(0, 0).Point(4, 0).Point(0, 4))
      .Add(kCircle, ProxyData().Point(5, 5).Real(2).Point(0, 0, 1))
      .Add(kArc3P, ProxyData().Point(1, 0).Point(0, 1).Point(-1, 0).Int(0))
      .Add(kShell, ProxyData().Int(3).Point(0, 0).Point(1, 0).Point(1, 1).Int(4).Int(3).Int(0).Int(1).Int(2))
      .Add(kUnicodeText2, ProxyData()
                              .Point(7, 8)
                              .Point(0, 0, 1)
                              .Point(0, 1)
                              .Utf16(u"\u5B8Bx")
                              .Int(-1)
                              .Int(0)
                              .Real(2.5)
                              .Real(0.8)
                              .Real(0))
      .Add(99, ProxyData().Int(0));
  const ProxyGraphics g = DecodeProxyGraphics(stream.Bytes());
  EXPECT_FALSE(g.Damaged);
  EXPECT_EQ(g.Commands, 13);
  EXPECT_EQ(g.PassedOver, 1);  // the unknown command 99
  ASSERT_EQ(g.Shapes.size(), 6u);

  const ProxyShape& line = g.Shapes[0];
  EXPECT_EQ(line.Pen.Layer, 2);
  EXPECT_EQ(line.Pen.Aci, 1);
  EXPECT_EQ(line.Points, (std::vector<PointD>{{100, 0}, {110, 0}}));

  const ProxyShape& polygon = g.Shapes[1];
  EXPECT_TRUE(polygon.Closed && polygon.Filled);
  EXPECT_EQ(polygon.Pen.Rgb, 0x102030);
  EXPECT_EQ(polygon.Points[0], (PointD{0, 0}));  // the transform was popped

  const ProxyShape& circle = g.Shapes[2];
  EXPECT_EQ(circle.Type, ProxyShape::Kind::Arc);
  EXPECT_DOUBLE_EQ(circle.Radius, 2);
  EXPECT_EQ(circle.Frame.Apply({0, 0}), (PointD{5, 5}));
  EXPECT_NEAR(circle.End - circle.Start, 2 * M_PI, 1e-12);

  const ProxyShape& half = g.Shapes[3];  // through (0, 1) from (1, 0) to (-1, 0)
  EXPECT_NEAR(half.Radius, 1, 1e-12);
  EXPECT_NEAR(half.End - half.Start, M_PI, 1e-12);
  const PointD top =
      half.Frame.Apply({std::cos((half.Start + half.End) / 2), std::sin((half.Start + half.End) / 2)});
  EXPECT_NEAR(top.x, 0, 1e-12);
  EXPECT_NEAR(top.y, 1, 1e-12);

  EXPECT_TRUE(g.Shapes[4].Filled);
  EXPECT_EQ(g.Shapes[4].Points.size(), 3u);

  const ProxyShape& text = g.Shapes[5];
  EXPECT_EQ(text.Text, "\u5B8Bx");
  EXPECT_TRUE(text.Unicode);
  EXPECT_DOUBLE_EQ(text.Height, 2.5);
  EXPECT_DOUBLE_EQ(text.WidthFactor, 0.8);
  EXPECT_EQ(text.Frame.Apply({0, 0}), (PointD{7, 8}));
  EXPECT_NEAR(text.Frame.MapAngle(0), 90, 1e-9);  // the direction (0, 1)
}

TEST(ProxyGraphics, ReadsTheBitCodedPolylineWithItsBulges) {
  // Flags 16 + 512 (bulges, closed), three points, three bulges.
  ProxyBits bits;
  bits.Short(16 + 512).Byte8(3).Byte8(3);
  bits.RawReal(10).RawReal(20).Changed(30).Put(0, 2).Changed(40).Changed(50);
  bits.Real(1).Put(2, 2).Put(2, 2);
  const std::string body = bits.bytes();
  const ProxyGraphics g = DecodeProxyGraphics(
      ProxyStream().Add(kLwPolyline, ProxyData().Int(int32_t(body.size())).Bytes(body)).Bytes());
  ASSERT_EQ(g.Shapes.size(), 1u);
  EXPECT_EQ(g.Shapes[0].Points, (std::vector<PointD>{{10, 20}, {30, 20}, {40, 50}}));
  EXPECT_EQ(g.Shapes[0].Bulges, (std::vector<double>{1, 0, 0}));
  EXPECT_TRUE(g.Shapes[0].Closed);
}

TEST(ProxyGraphics, DamagedStreamsKeepWhatCameBeforeAndNeverReadBeyond) {
  const std::string whole =
      ProxyStream().Add(kPolyline, TwoPoints(0, 0, 1, 1)).Add(kPolyline, TwoPoints(2, 2, 3, 3)).Bytes();
  // Cut in the second command.
  ProxyGraphics cut = DecodeProxyGraphics(whole.substr(0, whole.size() - 10));
  EXPECT_TRUE(cut.Damaged);
  EXPECT_EQ(cut.Shapes.size(), 1u);
  // Counts far beyond the bytes: a polyline of two billion points, a command count of
  // two billion, a shell whose face list runs past its end.
  EXPECT_TRUE(
      DecodeProxyGraphics(ProxyStream().Add(kPolyline, ProxyData().Int(2000000000)).Bytes()).Shapes.empty());
  std::string many = whole;
  many[4] = '\xFF', many[5] = '\xFF', many[6] = '\xFF', many[7] = '\x7F';
  EXPECT_EQ(DecodeProxyGraphics(many).Shapes.size(), 2u);
  const ProxyGraphics shell = DecodeProxyGraphics(
      ProxyStream()
          .Add(kShell, ProxyData().Int(2).Point(0, 0).Point(1, 0).Int(3).Int(1000).Int(0).Int(7))
          .Bytes());
  EXPECT_LE(shell.Shapes.size(), 1u);
  // A size below its own header, and nothing at all.
  EXPECT_TRUE(DecodeProxyGraphics(ProxyData().Int(16).Int(1).Int(4).Int(6).bytes()).Damaged);
  EXPECT_TRUE(DecodeProxyGraphics("").Shapes.empty());
  // Not a number: the shape is left out.
  EXPECT_TRUE(
      DecodeProxyGraphics(ProxyStream().Add(kPolyline, TwoPoints(0, NAN, 1, 1)).Bytes()).Shapes.empty());
}

Pairs ProxyEntity(const ProxyStream& stream, const std::string& layer, int sizeCode = 92) {
  Pairs pairs{{0, "ACAD_PROXY_ENTITY"}, {8, layer}, {100, "AcDbProxyEntity"}, {90, "498"}, {91, "501"}};
  for (auto& pair : stream.Pairs(sizeCode)) pairs.push_back(pair);
  pairs.insert(pairs.end(), {{93, "64"}, {310, "00FF00FF00FF00FF"}, {94, "0"}});
  return pairs;
}

TEST(ProxyGraphics, UnknownEntitiesAreDrawnFromThemAndCountedByClass) {
  ProxyStream wall;
  wall.Add(kLayer, ProxyData().Int(2))
      .Add(kPolyline, TwoPoints(0, 0, 10, 0))
      .Add(kLayer, ProxyData().Int(-1))
      .Add(kColor, ProxyData().Int(0))  // by block: the entity's own colour
      .Add(kCircle, ProxyData().Point(5, 5).Real(2).Point(0, 0, 1))
      .Add(kFill, ProxyData().Int(1))
      .Add(kPolygon, ProxyData().Int(3).Point(0, 0).Point(4, 0).Point(0, 4));
  Pairs entities = ProxyEntity(wall, "WALL", 160);
  entities.push_back({62, "3"});
  const Pairs bubble = ProxyEntity(
      ProxyStream().Add(
          kUnicodeText2,
          ProxyData().Point(1, 2).Point(0, 0, 1).Point(1, 0).Utf16(u"A1").Int(2).Int(0).Real(3).Real(1).Real(
              0)),
      "0");
  entities.insert(entities.end(), bubble.begin(), bubble.end());
  entities.insert(entities.end(),
                  {{0, "TCH_NOTHING"}, {8, "0"}, {0, "TCH_EMPTY"}, {92, "8"}, {310, "0800000000000000"}});
  const std::string file =
      DxfText({{0, "SECTION"},  {2, "CLASSES"}, {0, "CLASS"},   {1, "TCH_COLUMN"}, {0, "CLASS"},
               {1, "TCH_WALL"}, {0, "ENDSEC"},  {0, "SECTION"}, {2, "TABLES"},     {0, "TABLE"},
               {2, "LAYER"},    {0, "LAYER"},   {2, "0"},       {0, "LAYER"},      {2, "WALL"},
               {0, "LAYER"},    {2, "HATCH"},   {62, "5"},      {0, "ENDTAB"},     {0, "ENDSEC"}}) +
      EntitiesFile(entities);
  auto loaded = LoadModern(file);
  const Drawing& d = loaded->drawing;
  ASSERT_EQ(d.PolySegCount(), 1);
  EXPECT_EQ(d.Layers[std::size_t(d.PolySegs[0].Layer - 1)].Name, "HATCH");  // layer number 2 of the table
  EXPECT_EQ(d.PolySegs[0].Color, 0);                                        // by layer
  ASSERT_EQ(d.ArcCount(), 1);
  EXPECT_EQ(d.Layers[std::size_t(d.Arcs[0].Layer - 1)].Name, "WALL");
  EXPECT_EQ(d.Arcs[0].Color, 0x00FF00);  // colour 3 of the entity
  ASSERT_EQ(d.HatchCount(), 1);
  EXPECT_EQ(d.Hatches[0].Points.size(), 3u);
  ASSERT_EQ(d.TextCount(), 1);
  EXPECT_EQ(PlainText(d.Texts[0].Text), "A1");
  EXPECT_EQ(d.Texts[0].X, 1);
  EXPECT_DOUBLE_EQ(d.Texts[0].Height, 3);

  std::vector<std::string> report;
  for (const ReportEntry& e : loaded->outcome.Report.Entries())
    report.push_back(e.Kind + " x" + std::to_string(e.Count));
  EXPECT_EQ(report, (std::vector<std::string>{
                        "drawn from proxy graphics: ACAD_PROXY_ENTITY (TCH_WALL) x2",
                        "entity kind not drawn: TCH_NOTHING x1",
                        "entity kind not drawn (its proxy graphics draw nothing): TCH_EMPTY x1"}));
}

}  // namespace
}  // namespace dxfimport::testing
