#!/usr/bin/env bash
# Builds the Debian package from a build folder, checks what it declares and
# holds, installs it with apt-get, starts the installed program from its
# desktop entry until its window appears, and removes the package again.
# Runs as root (apt-get).
#   check-deb.sh [BUILD_FOLDER]    (default: build)
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$top/${1:-build}" && pwd)
id=org.orvane.TemplateEditor
package=orvane-template-editor
[ "$(id -u)" -eq 0 ] || { echo "check-deb: installing a package needs root" >&2; exit 1; }

ninja -C "$build" orvane-template-editor ov_app_icons >/dev/null
out=$(mktemp -d /tmp/orvane-deb.XXXXXX)
installed=
finish() {
  if [ -n "$installed" ]; then
    apt-get remove -y -q -o DPkg::Lock::Timeout=300 "$package" >/dev/null || true
  fi
  rm -rf "$out"
}
trap finish EXIT
(cd "$build" && cpack -G DEB -B "$out" >/dev/null)
deb=$(find "$out" -maxdepth 1 -name "${package}_*.deb")
[ -n "$deb" ] || { echo "check-deb: cpack made no package" >&2; exit 1; }
echo "check-deb: built $(basename "$deb")"

source "$top/scripts/check-lib.sh"
has() { # has TEXT PATTERN: the text has a line matching the extended regex
  grep -qE -- "$2" <<<"$1" || { echo "  no line matches $2" >&2; false; }
}

depends=$(dpkg-deb --field "$deb" Depends)
check "depends on the font package" has "$depends" '(^|, )fonts-liberation2($|,)'
check "depends on GTK (computed)" has "$depends" '(^|, )libgtk-3-0( |,|$)'
contents=$(dpkg-deb --contents "$deb")
check "everything under /usr" equals "$(awk '{print $6}' <<<"$contents" | grep -v '^\./usr/\?' | grep -v '^\./$' || true)" ""
check "font is a link to the font package's file" has "$contents" \
  'fonts/LiberationSans-Bold\.ttf -> /usr/share/fonts/truetype/liberation2/LiberationSans-Bold\.ttf$'
check "command is a link" has "$contents" '\./usr/bin/orvane-template-editor -> '
check "no desktop caches inside" equals "$(grep -E 'mime\.cache|mimeinfo\.cache|icon-theme\.cache' <<<"$contents" || true)" ""

export DEBIAN_FRONTEND=noninteractive
installed=yes
apt-get install -y -q --no-install-recommends -o DPkg::Lock::Timeout=300 "$deb" >/dev/null
folder=/usr/lib/$package
template=$folder/templates/painting.template
check "installed program runs from its folder" test -x "$folder/orvane-template-editor"
# The package's triggers updated the desktop's MIME and application caches.
export XDG_CURRENT_DESKTOP=GNOME
check "template type after install" equals "$(xdg-mime query filetype "$template")" application/x-orvane-template
check "templates open with the editor" equals "$(xdg-mime query default application/x-orvane-template)" "$id.desktop"
check "started from its desktop entry, the program opens its window, which carries the icon" \
  xvfb-run -a -n "$display" -s "-screen 0 1280x1024x24" bash "$top/scripts/first-window.sh" --icon gtk-launch "$id" "$template"

apt-get remove -y -q -o DPkg::Lock::Timeout=300 "$package" >/dev/null
installed=
check "removal leaves no installation folder" test ! -e "$folder"
check "removal takes the MIME type away" equals "$(xdg-mime query filetype "$top/resources/install/templates/painting.template")" application/xml

echo "check-deb: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
