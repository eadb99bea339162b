#!/usr/bin/env bash
# Makes the Debian package of a build folder in a temporary folder, unpacks
# it and checks what is inside: the programs run, and the menu entry, icon,
# software-centre listing and manual page are there and valid.
# Usage: package_test.sh BUILD_FOLDER PACKAGING_SOURCE_FOLDER
set -euo pipefail

build=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/out" >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log" >&2; fail "cpack did not make a package"; }
debs=("$work"/out/*.deb)
if [ ${#debs[@]} -ne 1 ] || [ ! -f "${debs[0]}" ]; then
  fail "expected one .deb, found: ${debs[*]}"
fi
deb=${debs[0]}
echo "package: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"

root=$work/root
dpkg-deb -x "$deb" "$root"
field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = kinfolio ] || fail "package name is $(field Package)"
version=$(field Version)
depends=$(field Depends)
echo "Depends: $depends"
for dep in fonts-noto-core tesseract-ocr-eng libc6; do
  [[ $depends == *"$dep"* ]] || fail "Depends lacks $dep"
done
for rec in fonts-noto-cjk fonts-noto-color-emoji; do
  [[ $(field Recommends) == *"$rec"* ]] || fail "Recommends lacks $rec"
done

# A sanitizer build reports fontconfig's lifelong allocations as leaks.
export ASAN_OPTIONS=detect_leaks=0
cli=$root/usr/bin/kinfolio-cli
[ -x "$cli" ] || fail "usr/bin/kinfolio-cli is missing"
"$cli" --help >"$work/help.txt" || fail "kinfolio-cli --help exited with $?"
grep -q "Usage: kinfolio-cli COMMAND" "$work/help.txt" || fail "unexpected help: $(cat "$work/help.txt")"
grep -q "export FOLDER" "$work/help.txt" || fail "help does not list export"

# The media module is found from where the program is: the example folder,
# written by the unpacked program, holds photos and a video made by it.
module=""
for m in "$root"/usr/lib/kinfolio/kinfolio-media.so "$root"/usr/lib/*/kinfolio/kinfolio-media.so; do
  [ -f "$m" ] && module=$m
done
[ -n "$module" ] || fail "the media module kinfolio-media.so is missing"
[[ $depends == *libvips* ]] || fail "Depends lacks the media module's libvips"
HOME=$work XDG_CACHE_HOME=$work/cache "$cli" example "$work/example" >"$work/example.txt" 2>&1 ||
  fail "kinfolio-cli example from the package: $(cat "$work/example.txt")"
[ -s "$work/example/Videos/VID_20240816_190512.mp4" ] || fail "the example has no video"
for f in usr/share/man/man1/kinfolio-cli.1.gz usr/share/doc/kinfolio/copyright \
  usr/share/doc/kinfolio/changelog.gz; do
  [ -s "$root/$f" ] || fail "$f is missing"
done
# Unpacked to files: grep -q on a pipe could stop the writer mid-way.
zcat "$root/usr/share/doc/kinfolio/changelog.gz" >"$work/changelog"
[[ $(sed -n 1p "$work/changelog") == "kinfolio ($version) "* ]] ||
  fail "the changelog does not start with version $version"
zcat "$root/usr/share/man/man1/kinfolio-cli.1.gz" >"$work/kinfolio-cli.1"
# Every command the program lists has its place in the manual page.
commands=$(sed -n '/^Commands:/,/^$/p' "$work/help.txt" | awk 'NF && !/^Commands:/ {print $1}')
[ -n "$commands" ] || fail "no commands in the help"
for c in $commands; do
  grep -q "^\\\\fB$c\\\\fP" "$work/kinfolio-cli.1" ||
    fail "the manual page does not describe $c"
done
if command -v groff >/dev/null; then
  for page in "$root"/usr/share/man/man1/*.gz; do
    warnings=$(zcat "$page" | groff -man -Tutf8 -ww -z 2>&1) || fail "groff failed on $page"
    [ -z "$warnings" ] || fail "groff on $(basename "$page"): $warnings"
  done
fi

id=app.kinfolio.Kinfolio
desktop=$root/usr/share/applications/$id.desktop
metainfo=$root/usr/share/metainfo/$id.metainfo.xml
if [ -x "$root/usr/bin/kinfolio" ]; then
  # Qt's offscreen platform needs no display; --version exits before any window.
  shown=$(QT_QPA_PLATFORM=offscreen "$root/usr/bin/kinfolio" --version 2>/dev/null) ||
    fail "kinfolio --version exited with $?"
  [ "$shown" = "Kinfolio $version" ] || fail "kinfolio --version says \"$shown\", the package $version"
  for f in "$desktop" "$metainfo" "$root/usr/share/icons/hicolor/scalable/apps/$id.svg" \
    "$root/usr/share/man/man1/kinfolio.1.gz"; do
    [ -s "$f" ] || fail "${f#"$root"/} is missing"
  done
  if command -v rsvg-convert >/dev/null; then
    for size in 48 128 256; do
      png=$root/usr/share/icons/hicolor/${size}x${size}/apps/$id.png
      [ -s "$png" ] || fail "the ${size}px icon is missing"
      if command -v file >/dev/null; then
        [[ $(file "$png") == *"PNG image data, $size x $size,"* ]] || fail "$(file "$png")"
      fi
    done
  fi
  grep -q "<release version=\"$version\"" "$metainfo" ||
    fail "the metainfo has no release $version"
  if command -v appstreamcli >/dev/null; then
    # The listing together with the menu entry and icons it names.
    appstreamcli validate-tree --no-net "$root" || fail "appstreamcli validate-tree"
  fi
else
  # A build without the window ships no menu entry; its files are still
  # checked where they are kept.
  [ ! -e "$desktop" ] || fail "a menu entry without the program it starts"
  desktop=$source_dir/$id.desktop
  metainfo=$source_dir/$id.metainfo.xml
  echo "no desktop window in this build: checked $desktop and $metainfo"
fi
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$desktop" || fail "desktop-file-validate"
fi
if command -v appstreamcli >/dev/null; then
  appstreamcli validate --no-net "$metainfo" || fail "appstreamcli validate"
fi
echo "package looks right"
