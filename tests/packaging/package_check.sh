#!/usr/bin/env bash
# The Debian packages as a user's machine would receive them, checked without installing
# them: made by CPack from this build, their control fields and file lists read with
# dpkg-deb, unpacked into a temporary root, and the program run from there (version,
# a picture of the sample drawing, the manual page, the desktop file, the MIME type, the
# metainfo); a host program is built against the unpacked dxfimport-dev.
# usage: package_check.sh BUILD_DIR SOURCE_DIR VERSION
# Exit 77 (skipped) without dpkg-deb.
set -euo pipefail
build=$1 source=$2 version=$3
command -v dpkg-deb >/dev/null && command -v dpkg-shlibdeps >/dev/null || exit 77

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
fail() { echo "FAIL: $*"; status=1; }

(cd "$build" && cpack -B "$work/out" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
deb=$work/out/dxfimport_${version}_amd64.deb dev=$work/out/dxfimport-dev_${version}_amd64.deb
[ -f "$deb" ] && [ -f "$dev" ] || { ls "$work/out"; fail "packages not named dxfimport{,-dev}_${version}_amd64.deb"; exit 1; }

# Control fields.
[ "$(dpkg-deb -f "$deb" Package)" = dxfimport ] || fail "package name"
[ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "version"
[ "$(dpkg-deb -f "$deb" Section)" = graphics ] || fail "section"
[ -n "$(dpkg-deb -f "$deb" Maintainer)" ] || fail "maintainer"
depends=$(dpkg-deb -f "$deb" Depends)
for need in libc6 libstdc++6 libqt6core6 libqt6gui6 libqt6widgets6 libqt6svg6 \
            fonts-liberation fonts-dejavu-core fonts-ipafont-gothic fonts-wqy-microhei qt6-image-formats-plugins; do
  [[ ", $depends" == *", $need"* ]] || fail "Depends lacks $need: $depends"
done
[[ "$(dpkg-deb -f "$dev" Depends)" == *"dxfimport (= $version)"* ]] || fail "dxfimport-dev does not depend on dxfimport"

# File lists.
dpkg-deb -c "$deb" | awk '{ print $6 }' >"$work/files"
dpkg-deb -c "$dev" | awk '{ print $6 }' >"$work/devfiles"
for path in usr/bin/dxfimport usr/share/man/man1/dxfimport.1.gz usr/share/bash-completion/completions/dxfimport \
            usr/share/applications/org.dxfimport.dxfimport.desktop usr/share/mime/packages/dxfimport.xml \
            usr/share/metainfo/org.dxfimport.dxfimport.metainfo.xml usr/share/icons/hicolor/scalable/apps/dxfimport.svg \
            usr/share/icons/hicolor/48x48/apps/dxfimport.png usr/share/icons/hicolor/256x256/apps/dxfimport.png \
            usr/share/doc/dxfimport/copyright usr/share/doc/dxfimport/examples/floorplan.dxf; do
  grep -qx "./$path" "$work/files" || fail "dxfimport lacks /$path"
done
for path in usr/include/dxfimport/dxf_class.h usr/lib/cmake/dxfimport/dxfimportConfig.cmake usr/lib/libdxfimport_host.a; do
  grep -qx "./$path" "$work/devfiles" || fail "dxfimport-dev lacks /$path"
done
if grep -v '^\./usr/' "$work/files" "$work/devfiles" | grep -vq ':\./$'; then fail "files outside /usr"; fi

# The unpacked tree, run.
root=$work/root
dpkg-deb -x "$deb" "$root" && dpkg-deb -x "$dev" "$root"
export QT_QPA_PLATFORM=offscreen DXFIMPORT_LOG=$work/dxfimport.log XDG_CONFIG_HOME=$work/config
[ "$("$root/usr/bin/dxfimport" --version)" = "dxfimport $version" ] || fail "--version"
"$root/usr/bin/dxfimport" render "$root/usr/share/doc/dxfimport/examples/floorplan.dxf" -o "$work/sample.bmp" ||
  fail "render of the sample"
[ "$(head -c 2 "$work/sample.bmp" 2>/dev/null)" = BM ] || fail "the sample picture is not a bitmap"
if command -v man >/dev/null; then
  MANWIDTH=80 man -l "$root/usr/share/man/man1/dxfimport.1.gz" | grep -q "EXIT STATUS" || fail "man page"
fi
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$root/usr/share/applications/org.dxfimport.dxfimport.desktop" || fail "desktop file"
fi
if command -v appstreamcli >/dev/null; then
  appstreamcli validate --no-net "$root/usr/share/metainfo/org.dxfimport.dxfimport.metainfo.xml" >"$work/as.log" 2>&1 ||
    { cat "$work/as.log"; fail "metainfo"; }
fi
if command -v update-mime-database >/dev/null; then
  mkdir -p "$work/mime/packages" && cp "$root/usr/share/mime/packages/dxfimport.xml" "$work/mime/packages/"
  update-mime-database "$work/mime" >/dev/null 2>&1 && grep -q 'image/vnd.dxf' "$work/mime/globs2" || fail "MIME type"
fi
completion=$root/usr/share/bash-completion/completions/dxfimport
bash -n "$completion" || fail "completion script"
if [ -f /usr/share/bash-completion/bash_completion ]; then
  completes() {  # completes WORD...: the completions of the last word
    bash -c 'source /usr/share/bash-completion/bash_completion; source "$1"; shift
      COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
      COMPREPLY=(); _dxfimport; echo "${COMPREPLY[*]}"' _ "$completion" "$@"
  }
  [ "$(completes dxfimport render --l)" = "--layer-off --legacy --layout --lineweights" ] ||
    fail "completion of render options: $(completes dxfimport render --l)"
  [[ " $(cd "$root/usr/share/doc/dxfimport/examples" && completes dxfimport "") " == *" floorplan.dxf "*" render "* ]] ||
    fail "completion of files and commands"
fi

# A host built against the unpacked development files.
if cmake -S "$source/tests/packaging/host_consumer" -B "$work/host" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
     >"$work/host.log" 2>&1 && cmake --build "$work/host" >>"$work/host.log" 2>&1; then
  "$work/host/host" || fail "the host program"
else
  cat "$work/host.log"
  fail "a host cannot be built with find_package(dxfimport)"
fi
exit $status
