#pragma once

#include <string>

namespace dxfimport {

// The host suite's shared settings that the importer uses: the folder the bitmap dialogs
// start in and the folder of the help file, each ending in a separator (empty until
// restored, as under automation).
const std::string& BitmapDirectory();
const std::string& HelpDirectory();

// DXFIMPORT_HOME, else <prefix>/share/dxfimport for a program installed in <prefix>/bin,
// else the program's own folder; with a trailing separator.
std::string InstallationDirectory();

// Restores the shared settings at a standalone start. They come from the native settings
// store ("Corvath Professional Design") when `flag` is false and "Conversion Complete" of
// section "Initialization" says so, else from CVDESIGN.INI in the installation folder.
// Missing values take their defaults: the installation folder followed by "BACKGRND" for
// the bitmaps, the installation folder for the help file.
void RestoreSharedSettings(bool flag);

// Ends a folder name with a separator unless it already ends with one.
std::string WithTrailingSeparator(std::string directory);

}  // namespace dxfimport
