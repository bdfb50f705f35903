#!/usr/bin/env bash
# The home folder the test suite runs in stands for the user's: before the suite
# ("setup") it gets the viewer's settings file and log as a user has them; after it
# ("check") they must be exactly as they were, and no settings file may have appeared
# beside them. Every test keeps its settings in a folder of its own instead.
# Setup also empties the tests' own folders (SETTINGS_DIR), so each run starts afresh.
# usage: user_home.sh setup|check HOME_DIR [SETTINGS_DIR]
set -euo pipefail
mode=$1 home=$2 own=${3:-}
settings=$home/.config/Corvath/dxfimport.conf
log=$home/.local/state/dxfimport/dxfimport.log
case $mode in
  setup)
    rm -rf "$home"
    [ -n "$own" ] && rm -rf "$own"
    mkdir -p "$(dirname "$settings")" "$(dirname "$log")"
    printf '[Viewer]\nFollowWindow=true\nSmoothLines=true\n\n[RecentFiles]\nfiles=/home/user/plans/site.dxf\n' >"$settings"
    printf 'a line the user had\n' >"$log"
    (cd "$home" && find . -type f | sort | xargs sha256sum) >"$home.sums"
    ;;
  check)
    now=$(cd "$home" && find . -type f | sort | xargs sha256sum)
    if [ "$now" != "$(cat "$home.sums")" ]; then
      echo "user_home: the tests changed the user's settings or log:" >&2
      diff <(cat "$home.sums") <(echo "$now") >&2 || true
      exit 1
    fi
    echo "user_home: the user's settings and log are untouched"
    ;;
esac
