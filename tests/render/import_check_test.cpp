#include "render/import_check.h"

#include <gtest/gtest.h>

#include <string>

#include "testing/dxf_fixture.h"

namespace dxfimport {
namespace {

using testing::DxfText;
using testing::EntitiesFile;
using testing::LoadModern;

ImportCheck CheckOf(const std::string& dxf) {
  auto loaded = LoadModern(dxf);
  return CheckImport(loaded->drawing, loaded->outcome, Georeference{});
}

bool Says(const ImportCheck& check, ImportCheck::Level level, const std::string& part) {
  for (const auto& r : check.Reasons)
    if (r.level == level && r.text.find(part) != std::string::npos) return true;
  return false;
}

}  // namespace

// The verdicts a host acts on: a drawing in millimetres with a line is fit; one that
// names a missing image is fit with a warning that names it; one with nothing in model
// space, or whose only layer is off, is not fit; one far from the origin is warned of.
TEST(ImportCheck, VerdictsAndTheirReasons) {
  const std::string mm = DxfText({{0, "SECTION"}, {2, "HEADER"}, {9, "$INSUNITS"}, {70, "4"}, {0, "ENDSEC"}});
  const ImportCheck fit = CheckOf(mm + EntitiesFile({{0, "LINE"}, {8, "0"}, {11, "10"}}));
  EXPECT_EQ(fit.Verdict(), "fit as background");
  EXPECT_TRUE(Says(fit, ImportCheck::Level::Note, "units declared: millimetres"));

  const ImportCheck missing =
      CheckOf(mm + testing::WithObjects(EntitiesFile({{0, "LINE"},
                                                      {8, "0"},
                                                      {11, "10"},
                                                      {0, "IMAGE"},
                                                      {8, "0"},
                                                      {11, "1"},
                                                      {22, "1"},
                                                      {13, "8"},
                                                      {23, "8"},
                                                      {340, "A1"}}),
                                        {{0, "IMAGEDEF"}, {5, "A1"}, {1, "gone.png"}}));
  EXPECT_EQ(missing.Verdict(), "fit with warnings");
  EXPECT_TRUE(Says(missing, ImportCheck::Level::Warning, "image missing: gone.png"));

  const ImportCheck empty = CheckOf(mm + EntitiesFile({}));
  EXPECT_EQ(empty.Verdict(), "not fit");
  EXPECT_TRUE(Says(empty, ImportCheck::Level::Problem, "nothing to draw"));
  const ImportCheck off = CheckOf(mm +
                                  DxfText({{0, "SECTION"},
                                           {2, "TABLES"},
                                           {0, "TABLE"},
                                           {2, "LAYER"},
                                           {0, "LAYER"},
                                           {2, "0"},
                                           {62, "-7"},
                                           {0, "ENDTAB"},
                                           {0, "ENDSEC"}}) +
                                  EntitiesFile({{0, "LINE"}, {8, "0"}, {11, "10"}}));
  EXPECT_EQ(off.Verdict(), "not fit");

  const ImportCheck far = CheckOf(EntitiesFile(
      {{0, "LINE"}, {8, "0"}, {10, "3500000"}, {20, "5800000"}, {11, "3500010"}, {21, "5800010"}}));
  EXPECT_EQ(far.Verdict(), "fit with warnings");
  EXPECT_TRUE(Says(far, ImportCheck::Level::Warning, "far from the origin"));
  EXPECT_TRUE(Says(far, ImportCheck::Level::Warning, "units not declared"));
  EXPECT_EQ(far.Lines().front(), "Import check: fit with warnings");
}

}  // namespace dxfimport
