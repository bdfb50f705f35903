#include "dxf/model/text_styles.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "support/text_decode.h"

namespace dxfimport {
namespace {

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// Families of the TrueType files that drawings name most, by file name without its
// extension.
struct KnownFile {
  std::string_view file;
  std::string_view family;
  bool bold, italic;
};
constexpr std::array kKnownFiles = std::to_array<KnownFile>({
    {"arial", "Arial", false, false},
    {"arialbd", "Arial", true, false},
    {"ariali", "Arial", false, true},
    {"arialbi", "Arial", true, true},
    {"arialn", "Arial Narrow", false, false},
    {"arialnb", "Arial Narrow", true, false},
    {"ariblk", "Arial Black", false, false},
    {"times", "Times New Roman", false, false},
    {"timesbd", "Times New Roman", true, false},
    {"timesi", "Times New Roman", false, true},
    {"cour", "Courier New", false, false},
    {"courbd", "Courier New", true, false},
    {"calibri", "Calibri", false, false},
    {"calibrib", "Calibri", true, false},
    {"cambria", "Cambria", false, false},
    {"verdana", "Verdana", false, false},
    {"tahoma", "Tahoma", false, false},
    {"segoeui", "Segoe UI", false, false},
    {"consola", "Consolas", false, false},
    {"georgia", "Georgia", false, false},
    {"trebuc", "Trebuchet MS", false, false},
    {"gothic", "Century Gothic", false, false},
    {"simsun", "SimSun", false, false},
    {"msgothic", "MS Gothic", false, false},
    {"msmincho", "MS Mincho", false, false},
    {"malgun", "Malgun Gothic", false, false},
});

}  // namespace

FaceChoice FaceOfFont(std::string_view fontFile, std::string_view family) {
  std::string file = Lower(Trim(fontFile));
  if (const std::size_t slash = file.find_last_of("/\\"); slash != std::string::npos)
    file.erase(0, slash + 1);
  const std::size_t dot = file.rfind('.');
  const std::string extension = dot == std::string::npos ? "" : file.substr(dot + 1);
  const std::string base = dot == std::string::npos ? file : file.substr(0, dot);
  const bool named =
      extension.empty() && std::any_of(kKnownFiles.begin(), kKnownFiles.end(), [&](const KnownFile& k) {
        return k.file == base || Lower(k.family) == base;
      });
  const bool trueType = extension == "ttf" || extension == "ttc" || extension == "otf" || named;
  if (!Trim(family).empty() && (trueType || extension.empty())) return {std::string(Trim(family)), false};
  if (!trueType) return {std::string(kStrokeStandIn), true};
  for (const KnownFile& k : kKnownFiles)
    if (k.file == base || Lower(k.family) == base) return {std::string(k.family), false, k.bold, k.italic};
  std::string guess = base;
  if (!guess.empty()) guess[0] = char(std::toupper(static_cast<unsigned char>(guess[0])));
  return {guess, false};
}

}  // namespace dxfimport
