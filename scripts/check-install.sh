#!/usr/bin/env bash
# Installs the program from a build folder into a temporary prefix and checks
# it as a desktop sees it: the layout and its links, the desktop entry, the
# MIME types (a template and a codeset are recognised, templates open with
# the editor), the AppStream metainfo and the icon; then starts the installed
# program on a shipped template until its window appears, and finally checks
# that nothing in the prefix refers to the source or build folder.
#   check-install.sh [BUILD_FOLDER]    (default: build)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$top/${1:-build}" && pwd)
id=org.orvane.TemplateEditor

ninja -C "$build" orvane-template-editor ov_app_icons >/dev/null
prefix=$(mktemp -d /tmp/orvane-install.XXXXXX)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

source "$top/scripts/check-lib.sh"
is_file() { [ -f "$1" ] && [ ! -L "$1" ]; }
links_to() { [ -L "$1" ] && [ -e "$1" ] && [ "$(readlink -f "$1")" = "$(readlink -f "$2")" ]; }
quiet() { # passes when the command succeeds and prints nothing on stderr
  local err
  err=$("$@" 2>&1 >/dev/null) && [ -z "$err" ] || { echo "$err" >&2; false; }
}
png_size() { # width x height from the PNG header
  local hex
  hex=$(od -An -tx1 -j16 -N8 "$1" | tr -d ' \n')
  echo "$((16#${hex:0:8}))x$((16#${hex:8:8}))"
}

folder=$prefix/lib/orvane-template-editor
share=$prefix/share
template=$folder/templates/painting.template
codeset=$folder/codesets/condition_remarks.codeset

check "program in the installation folder" is_file "$folder/orvane-template-editor"
check "command links to the program" links_to "$prefix/bin/orvane-template-editor" "$folder/orvane-template-editor"
check "view font beside the program" links_to "$folder/fonts/LiberationSans-Bold.ttf" \
  /usr/share/fonts/truetype/liberation2/LiberationSans-Bold.ttf
check "shipped template" is_file "$template"
check "shipped codeset" is_file "$codeset"

check "desktop entry is valid" quiet desktop-file-validate "$share/applications/$id.desktop"
check "metainfo is valid" appstreamcli validate --no-net --no-color "$share/metainfo/$id.metainfo.xml"

# The MIME database of the prefix, as a desktop with it in its data folders
# would build and read it.
export XDG_DATA_DIRS=$share:/usr/share XDG_CURRENT_DESKTOP=GNOME
check "MIME types are accepted" quiet update-mime-database "$share/mime"
update-desktop-database "$share/applications"
check "template type" equals "$(xdg-mime query filetype "$template")" application/x-orvane-template
check "codeset type" equals "$(xdg-mime query filetype "$codeset")" application/x-orvane-codeset
check "template root element" grep -qx ' template application/x-orvane-template' "$share/mime/XMLnamespaces"
check "codeset root element" grep -qx ' codeset application/x-orvane-codeset' "$share/mime/XMLnamespaces"
check "templates open with the editor" equals "$(xdg-mime query default application/x-orvane-template)" "$id.desktop"

icons=$share/icons/hicolor
check "scalable icon" is_file "$icons/scalable/apps/$id.svg"
for size in 48 128; do
  png=$icons/${size}x$size/apps/$id.png
  check "${size} pixel icon" equals "$( [ -f "$png" ] && png_size "$png")" "${size}x$size"
done

check "installed program opens its window, which carries the icon" \
  xvfb-run -a -n "$display" -s "-screen 0 1280x1024x24" bash "$top/scripts/first-window.sh" --icon \
  "$prefix/bin/orvane-template-editor" "$template"

hits=$(grep -rlF -e "$top" -e "$build" "$prefix" || true)
check "nothing refers to the source or build folder" equals "$hits" ""

echo "check-install: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
