#!/usr/bin/env bash
# Starts the editor as a user would and waits for its first window:
#   first-window.sh [--timeout SECONDS] [--shot FILE] [--icon] COMMAND [ARGUMENT...]
# COMMAND is the program itself or a launcher that starts it and ends
# (gtk-launch). The program runs with a home folder of its own that already
# holds a workspace, so the first window is the editing window. Passes when a
# visible window whose title holds "Orvane" appears; fails when the program
# ends first, shows an error message instead, or the time runs out. With
# --shot, the window is saved as a PNG; with --icon, the window must carry an
# icon (the application's, found in the icon theme). The window is then
# closed with Control+W; a program that does not end then is terminated.
# Needs a display: run it under xvfb-run.
set -euo pipefail

timeout=30
shot=
icon=
while [ $# -gt 0 ]; do
  case $1 in
    --timeout) timeout=$2; shift 2 ;;
    --shot) shot=$2; shift 2 ;;
    --icon) icon=yes; shift ;;
    *) break ;;
  esac
done
[ $# -gt 0 ] || { echo "usage: $0 [--timeout S] [--shot FILE] [--icon] COMMAND [ARG...]" >&2; exit 2; }
[ -n "${DISPLAY:-}" ] || { echo "first-window: no display (run under xvfb-run)" >&2; exit 2; }

home=$(mktemp -d /tmp/orvane-first-window.XXXXXX)
log=$home/program.log
pid=
cleanup() {
  if [ -n "$pid" ] && alive "$pid"; then kill -KILL "$pid" 2>/dev/null || true; fi
  rm -rf "$home"
}
trap cleanup EXIT

mkdir -p "$home/Orvane Workspace" "$home/.config" "$home/.local/share" "$home/.cache"
export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share \
       XDG_CACHE_HOME=$home/.cache NO_AT_BRIDGE=1 GSETTINGS_BACKEND=memory

program=$1
fail() {
  echo "first-window: $*" >&2
  echo "--- output of $program:" >&2
  cat "$log" >&2 || true
  exit 1
}
# Running, and not a child that has ended but not been waited for.
alive() {
  local state
  state=$(ps -o stat= -p "$1" 2>/dev/null) || return 1
  [ "${state:0:1}" != Z ]
}

"$@" >"$log" 2>&1 &
pid=$!
started=$(date +%s)
window=
while :; do
  window=$(xdotool search --onlyvisible --name 'Orvane' 2>/dev/null | head -n1 || true)
  [ -z "$window" ] || break
  if xdotool search --onlyvisible --name '^Error$' >/dev/null 2>&1; then
    fail "$program showed an error message instead of its window"
  fi
  if [ -n "$pid" ] && ! alive "$pid"; then
    status=0
    wait "$pid" || status=$?
    # A launcher ends once it has started the program; the program itself
    # must not end before its window appears.
    [ "$status" -eq 0 ] || fail "$program ended with status $status before a window appeared"
    pid=
  fi
  [ $(($(date +%s) - started)) -lt "$timeout" ] || fail "no window of $program within $timeout s"
  sleep 0.2
done
echo "first-window: \"$(xdotool getwindowname "$window")\" appeared after $(($(date +%s) - started)) s"

status=0
# The property is read whole before it is matched: a reader that stops at the
# first line would end xprop with a broken pipe, which pipefail counts as a
# failure.
icon_property=
[ -z "$icon" ] || icon_property=$(xprop -id "$window" _NET_WM_ICON 2>&1 || true)
if [ -n "$icon" ] && [[ $icon_property != "_NET_WM_ICON(CARDINAL)"* ]]; then
  echo "first-window: the window has no icon" >&2
  status=1
fi

if [ -n "$shot" ]; then
  sleep 1 # let the first drawing reach the screen
  import -window "$window" "$shot"
  echo "first-window: saved $shot"
fi

# The program that owns the window (a launcher's child is not ours).
owner=$(xdotool getwindowpid "$window" 2>/dev/null || echo "$pid")
xdotool windowfocus --sync "$window" key --clearmodifiers ctrl+w || true
for _ in $(seq 50); do
  alive "$owner" || break
  sleep 0.2
done
if alive "$owner"; then
  echo "first-window: the window stayed open after Control+W; terminating the program"
  kill -TERM "$owner" 2>/dev/null || true
fi
exit "$status"
