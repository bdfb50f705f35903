#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dxfimport {

enum class Language { English, Japanese };

// The user's language: Japanese when LC_ALL, LC_MESSAGES or LANG (the first that is set)
// starts with "ja", else US English. SetLanguage overrides it (tests, embedding hosts).
Language CurrentLanguage();
void SetLanguage(std::optional<Language> language);

// The raw string-table entry for `id` in `language`, if there is one.
std::optional<std::string_view> StringTableEntry(int id, Language language);

// Text `id` of the string table in the user's language. A missing entry gives `fallback`
// when one is passed, else "Error". A fallback that differs (ignoring case) from the
// table's text is logged at debugging level. Letter placeholders (%A, %V, %T, %N) are
// filled in.
std::string LoadResText(int id, std::optional<std::string_view> fallback = std::nullopt);

// Fills the placeholders of a text: %A application title, %V version, %1.. the items in
// order, %T the current time ("medium time"), %N a line break (carriage return, line feed).
std::string SubstituteArgs(std::string_view text, const std::vector<std::string>& items);

// The caption of every message box and the prefix of every log line.
const std::string& ApplicationTitle();
void SetApplicationTitle(std::string title);

// "major.minor.revision".
std::string VersionText();

}  // namespace dxfimport
