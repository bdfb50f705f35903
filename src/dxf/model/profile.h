#pragma once

#include <memory>

#include "support/numbers.h"

namespace dxfimport {

class LoadContext;
class ProfileReader;

// How a file is read and drawn.
//  Legacy: the original importer's rules, quirks included: every line is compared with
//    the entity keywords, a group code above 80 ends the load, values are singles, and
//    the redraw draws every kind as it always did.
//  Modern: a structural reader of (group code, value) pairs for the files of today's CAD
//    tools, in double precision, with a redraw that shows what CAD tools show.
enum class ReadingProfile { Legacy, Modern };

// The reader of a profile, over one load's context (legacy/, modern/).
std::unique_ptr<ProfileReader> MakeLegacyReader(LoadContext& context);
std::unique_ptr<ProfileReader> MakeModernReader(LoadContext& context);

// Every difference between the two profiles that code shared by both consults, decided
// here and nowhere else. The readers themselves are separate (one per profile).
struct ProfileRules {
  ReadingProfile Profile;
  // Coordinates and extents are stored rounded to single precision, and the view (zoom
  // windows, scale, aspect) is computed in single precision: ask Held and InPrecision.
  bool SinglePrecision;
  // The redraw draws each kind as the original importer did: straight polyline segments,
  // the crossed text measurements, integer device points, the legacy colour numbers.
  bool LegacyPainter;
  // Numbers in tables dumps are written with the digits a single holds.
  int DumpDigits;
  // A redraw of part of the drawing draws only the entries a spatial index finds in the
  // view, and shows what it has drawn every 100 ms; otherwise every entry is visited and
  // the picture is refreshed every 0.5 % of them.
  bool IndexedRedraw;
  // The reader notes what it skipped, repaired or left out in a load report.
  bool KeepsLoadReport;
  // A binary DXF file is read as the text it stands for (else it is no DXF).
  bool ReadsBinary;
  // A file that is no drawing (DWG, an image, an empty file, a folder) is named for what
  // it is, in one line, before any reading.
  bool NamesNonDrawings;
  // Makes the profile's reader for one load.
  std::unique_ptr<ProfileReader> (*MakeReader)(LoadContext& context);

  static const ProfileRules& Of(ReadingProfile profile);

  // A number as the profile keeps it (rounded to a single, with the run time's Overflow,
  // in single precision).
  double Held(double v) const { return SinglePrecision ? double(CSng(v)) : v; }
  // Runs body(Real{}) with Real the profile's floating-point type.
  template <class Body>
  decltype(auto) InPrecision(Body&& body) const {
    return SinglePrecision ? body(float{}) : body(double{});
  }
};

inline const ProfileRules& ProfileRules::Of(ReadingProfile profile) {
  static constexpr ProfileRules kLegacy{ReadingProfile::Legacy, true, true, 9, false, false, false, false,
                                        &MakeLegacyReader};
  static constexpr ProfileRules kModern{ReadingProfile::Modern, false, false, 17, true, true, true, true,
                                        &MakeModernReader};
  return profile == ReadingProfile::Legacy ? kLegacy : kModern;
}

}  // namespace dxfimport
