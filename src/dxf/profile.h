#pragma once

namespace dxfimport {

// How a file is read and drawn.
//  Legacy: the original importer's rules, quirks included: every line is compared with
//    the entity keywords, a group code above 80 ends the load, values are singles, and
//    the redraw draws every kind as it always did.
//  Modern: a structural reader of (group code, value) pairs for the files of today's CAD
//    tools, in double precision, with a redraw that shows what CAD tools show.
enum class ReadingProfile { Legacy, Modern };

// Every difference between the two profiles that code shared by both consults, decided
// here and nowhere else. The readers themselves are separate (one per profile).
struct ProfileRules {
  ReadingProfile Profile;
  // Coordinates and extents are stored rounded to single precision, and the view (zoom
  // windows, scale, aspect) is computed in single precision.
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

  static const ProfileRules& Of(ReadingProfile profile);
};

inline const ProfileRules& ProfileRules::Of(ReadingProfile profile) {
  static constexpr ProfileRules kLegacy{ReadingProfile::Legacy, true, true, 9, false};
  static constexpr ProfileRules kModern{ReadingProfile::Modern, false, false, 17, true};
  return profile == ReadingProfile::Legacy ? kLegacy : kModern;
}

}  // namespace dxfimport
