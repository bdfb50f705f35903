#include "support/texts.h"

#include <QString>
#include <QTime>
#include <cstdlib>

#include "support/log.h"

namespace dxfimport {
namespace {

std::optional<Language> g_languageOverride;
std::string g_applicationTitle;

std::string ReplaceAll(std::string text, std::string_view code, std::string_view value) {
  if (code.empty()) return text;
  for (std::size_t pos = text.find(code); pos != std::string::npos;
       pos = text.find(code, pos + value.size())) {
    text.replace(pos, code.size(), value);
  }
  return text;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return QString::fromUtf8(a.data(), qsizetype(a.size()))
             .compare(QString::fromUtf8(b.data(), qsizetype(b.size())), Qt::CaseInsensitive) == 0;
}

// "Medium time" of the run time: hours and minutes on a 12-hour clock with AM/PM.
std::string MediumTime() { return QTime::currentTime().toString(QStringLiteral("hh:mm AP")).toStdString(); }

}  // namespace

Language CurrentLanguage() {
  if (g_languageOverride) return *g_languageOverride;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value && *value)
      return std::string_view(value).starts_with("ja") ? Language::Japanese : Language::English;
  }
  return Language::English;
}

void SetLanguage(std::optional<Language> language) { g_languageOverride = language; }

std::string LoadResText(int id, std::optional<std::string_view> fallback) {
  std::optional<std::string_view> entry = StringTableEntry(id, CurrentLanguage());
  if (fallback && entry && !EqualIgnoringCase(*fallback, *entry)) {
    LogDebug("mismatch at number " + std::to_string(id) + ": " + std::string(*fallback) + "<>" +
             std::string(*entry));
  }
  std::string result = entry ? std::string(*entry) : fallback ? std::string(*fallback) : "Error";
  if (result.find('%') != std::string::npos) result = SubstituteArgs(result, {});
  return result;
}

std::string SubstituteArgs(std::string_view text, const std::vector<std::string>& items) {
  std::string out(text);
  out = ReplaceAll(std::move(out), "%A", ApplicationTitle());
  out = ReplaceAll(std::move(out), "%V", VersionText());
  for (std::size_t i = 0; i < items.size(); ++i)
    out = ReplaceAll(std::move(out), "%" + std::to_string(i + 1), items[i]);
  if (out.find("%T") != std::string::npos) out = ReplaceAll(std::move(out), "%T", MediumTime());
  return ReplaceAll(std::move(out), "%N", "\r\n");
}

const std::string& ApplicationTitle() {
  if (g_applicationTitle.empty()) {
    g_applicationTitle = std::string(StringTableEntry(1000, CurrentLanguage()).value_or(""));
  }
  return g_applicationTitle;
}

void SetApplicationTitle(std::string title) { g_applicationTitle = std::move(title); }

std::string VersionText() {
  return std::to_string(DXFIMPORT_VERSION_MAJOR) + "." + std::to_string(DXFIMPORT_VERSION_MINOR) + "." +
         std::to_string(DXFIMPORT_VERSION_PATCH);
}

}  // namespace dxfimport
