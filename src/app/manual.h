#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

namespace dxfimport {

// The manual page dxfimport(1): `prose` is the page's roff text, in which the line
// ".\" @OPTIONS@" stands for the options and commands (written from `app`) and
// "@VERSION@" for the program's version.
std::string ManualPage(const CLI::App& app, std::string_view prose, std::string_view version);

// A bash completion script for the program: commands, their options, DXF files for the
// drawing arguments, picture files after -o, folders for sweep.
std::string BashCompletion(const CLI::App& app);

}  // namespace dxfimport
