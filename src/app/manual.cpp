#include "app/manual.h"

#include <sstream>

namespace dxfimport {
namespace {

// Text safe in roff: backslashes doubled, hyphens as minus signs, no leading control dot.
std::string Roff(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c == '\\')
      out += "\\e";
    else if (c == '-')
      out += "\\-";
    else
      out += c;
  }
  if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
  return out;
}

bool TakesValue(const CLI::Option* o) { return o->get_type_size() != 0; }

std::vector<const CLI::Option*> Named(const CLI::App& app) {
  return app.get_options([](const CLI::Option* o) { return o->nonpositional(); });
}
std::vector<const CLI::Option*> Positional(const CLI::App& app) {
  return app.get_options([](const CLI::Option* o) { return !o->nonpositional(); });
}

// "-o, --output FILE" in bold and italics.
std::string OptionTerm(const CLI::Option* o) {
  std::string term;
  for (const std::string& s : o->get_snames())
    term += (term.empty() ? "" : ", ") + ("\\fB" + Roff("-" + s) + "\\fR");
  for (const std::string& l : o->get_lnames())
    term += (term.empty() ? "" : ", ") + ("\\fB" + Roff("--" + l) + "\\fR");
  if (TakesValue(o)) term += " \\fI" + Roff(o->get_type_name()) + "\\fR";
  return term;
}

std::string OptionText(const CLI::Option* o) {
  std::string text = Roff(o->get_description());
  if (!o->get_default_str().empty()) text += " (default: " + Roff(o->get_default_str()) + ")";
  return text + ".";
}

void WriteOptions(std::ostringstream& out, const CLI::App& app) {
  for (const CLI::Option* o : Named(app)) out << ".TP\n" << OptionTerm(o) << "\n" << OptionText(o) << "\n";
}

std::string Synopsis(const CLI::App& command) {
  std::string line = "\\fBdxfimport " + Roff(command.get_name()) + "\\fR";
  for (const CLI::Option* o : Positional(command)) {
    const std::string name = "\\fI" + Roff(o->get_name(true)) + "\\fR";
    line += " " + (o->get_required() ? name : "[" + name + "]");
  }
  return line + " [\\fIOPTIONS\\fR]";
}

std::string Words(const std::vector<std::string>& words) {
  std::string out;
  for (const std::string& w : words) out += (out.empty() ? "" : " ") + w;
  return out;
}

// "-o --output ..." of the named options (only those that take a value, when asked).
std::vector<std::string> OptionNames(const CLI::App& app, bool valuesOnly = false) {
  std::vector<std::string> names;
  for (const CLI::Option* o : Named(app)) {
    if (valuesOnly && !TakesValue(o)) continue;
    for (const std::string& s : o->get_snames()) names.push_back("-" + s);
    for (const std::string& l : o->get_lnames()) names.push_back("--" + l);
  }
  return names;
}

std::string Alternatives(const std::vector<std::string>& words) {
  std::string out;
  for (const std::string& w : words) out += (out.empty() ? "" : "|") + w;
  return out;
}

}  // namespace

std::string ManualPage(const CLI::App& app, std::string_view prose, std::string_view version) {
  std::ostringstream options;
  options << ".SH OPTIONS\n";
  WriteOptions(options, app);
  options << ".SH COMMANDS\n";
  for (const CLI::App* command : app.get_subcommands({})) {
    options << ".SS " << Roff(command->get_name()) << "\n"
            << Synopsis(*command) << "\n.PP\n"
            << Roff(command->get_description()) << ".\n";
    WriteOptions(options, *command);
  }
  std::string page(prose);
  const std::string marker = ".\\\" @OPTIONS@\n";
  if (auto at = page.find(marker); at != std::string::npos) page.replace(at, marker.size(), options.str());
  for (auto at = page.find("@VERSION@"); at != std::string::npos; at = page.find("@VERSION@"))
    page.replace(at, 9, version);
  return page;
}

std::string BashCompletion(const CLI::App& app) {
  std::vector<std::string> commands;
  for (const CLI::App* command : app.get_subcommands({})) commands.push_back(command->get_name());
  std::ostringstream out;
  out << "# bash completion for dxfimport (written by the build from the program's own options)\n"
      << "_dxfimport() {\n"
      << "  local cur prev words cword\n"
      << "  _init_completion || return\n"
      << "  local command=\"\" i\n"
      << "  for ((i = 1; i < cword; i++)); do\n"
      << "    case ${words[i]} in " << Alternatives(commands) << ") command=${words[i]}; break ;; esac\n"
      << "  done\n"
      << "  local options values\n"
      << "  case $command in\n";
  auto branch = [&out](const std::string& name, const CLI::App& a) {
    out << "    " << (name.empty() ? "\"\"" : name) << ") options=\"" << Words(OptionNames(a))
        << "\" values=\"" << Words(OptionNames(a, true)) << "\" ;;\n";
  };
  branch("", app);
  for (const CLI::App* command : app.get_subcommands({})) branch(command->get_name(), *command);
  out << "  esac\n"
      << "  if [[ \" $values \" == *\" $prev \"* ]]; then\n"
      << "    case $command:$prev in\n"
      << "      render:-o | render:--output) _filedir '@(bmp|png|svg|pdf)' ;;\n"
      << "      sweep:-o | sweep:--output) _filedir md ;;\n"
      << "    esac\n"
      << "    return\n"
      << "  fi\n"
      << "  if [[ $cur == -* ]]; then\n"
      << "    COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
      << "  elif [[ $command == sweep ]]; then\n"
      << "    _filedir -d\n"
      << "  else\n"
      << "    _filedir '@(dxf|DXF)'\n"
      << "    [[ -z $command ]] && COMPREPLY+=($(compgen -W \"" << Words(commands) << "\" -- \"$cur\"))\n"
      << "  fi\n"
      << "}\n"
      << "complete -F _dxfimport dxfimport\n";
  return out.str();
}

}  // namespace dxfimport
