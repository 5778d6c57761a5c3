#!/bin/sh
# Installs the program from its build folder into an empty one and does a job with what stands
# there: check_installed.sh CMAKE BUILD_FOLDER
set -eu
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$1" --install "$2" --prefix "$prefix" >"$prefix/log" || { cat "$prefix/log"; exit 1; }

# Each name that the desktop entry gives has to be there.
entry=$prefix/share/applications/quillmere.desktop
program=$(sed -n 's/^Exec=//p' "$entry")
icon=$(sed -n 's/^Icon=//p' "$entry")
test -x "$prefix/bin/$program"
for size in scalable 256x256 48x48; do
  ls "$prefix/share/icons/hicolor/$size/apps/$icon".* >/dev/null
done
for table in "GL System Errors" "QT System Errors" "GL Framework Errors" "GL Lumped Library Errors" Localizable; do
  test -s "$prefix/share/quillmere/en.lproj/$table.strings"
done
for page in quillmere quillmere-batch; do
  gzip -t "$prefix/share/man/man1/$page.1.gz"
done

# A job needs the window, so the program has to find its resources where they were installed.
mkdir "$prefix/source" "$prefix/target"
mask="$prefix/share/icons/hicolor/48x48/apps/$icon.png"
printed=$("$prefix/bin/quillmere-batch" "$mask" "$prefix/source" "$prefix/target")
test -z "$printed" || { echo "$printed"; exit 1; }

mv "$prefix/share/quillmere" "$prefix/share/elsewhere"
status=0
"$prefix/bin/quillmere-batch" "$mask" "$prefix/source" "$prefix/target" >/dev/null || status=$?
test "$status" -eq 3 || { echo "found resources that aren't installed (status $status)"; exit 1; }
