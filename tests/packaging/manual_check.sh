#!/usr/bin/env bash
# The manual page against the program: for the program itself and for each command, the
# options the page lists must be the options --help prints, no more and no fewer; the
# page must render without a warning and name the version --version prints.
# usage: manual_check.sh DXFIMPORT MANUAL.1
set -euo pipefail
program=$1 page=$2
status=0

# "SECTION OPTION" lines from --help: the option lines after "Options:".
help_options() {
  local section=$1
  shift
  "$program" "$@" --help | awk -v s="$section" '
    /^[A-Za-z].*:$/ { inside = ($0 == "Options:") ; next }
    inside && /^  -/ { n = split($1, names, ","); for (i = 1; i <= n; i++) print s, names[i] }'
}

# "SECTION OPTION" lines from the page: option terms after .TP, by .SH OPTIONS / .SS COMMAND.
page_options() {
  awk '
    /^\.SH OPTIONS/ { section = "dxfimport"; next }
    /^\.SH / { if ($0 != ".SH COMMANDS") section = "" ; next }
    /^\.SS / { section = $2; next }
    /^\.TP/ { term = 1; next }
    term && section != "" {
      line = $0; gsub(/\\-/, "-", line)
      while (match(line, /\\fB-[-A-Za-z]+\\fR/)) {
        print section, substr(line, RSTART + 3, RLENGTH - 6); line = substr(line, RSTART + RLENGTH)
      }
      term = 0 }' "$page"
}

expected=$( { help_options dxfimport
  for command in $("$program" --help | awk '/^Subcommands:/ { on = 1; next } on && /^  [a-z]/ { print $1 }'); do
    help_options "$command" "$command"
  done; } | sort)
listed=$(page_options | sort)
if [ "$expected" != "$listed" ]; then
  echo "manual page and --help list different options:"
  diff <(echo "$expected") <(echo "$listed") || true
  status=1
fi
[ -n "$expected" ] || { echo "no options read from --help"; status=1; }

version=$("$program" --version)
grep -q "\"${version}\"" "$page" || { echo "the page does not name \"$version\""; status=1; }
if command -v man >/dev/null; then
  warnings=$(MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null || true)
  [ -z "$warnings" ] || { echo "man warns: $warnings"; status=1; }
fi
exit $status
