#!/usr/bin/env bash
# Installs what is missing, builds, and starts the editor from the caller's
# folder with the caller's arguments; without any, on the bundled example
# template that the build copies beside the program.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
# The build runs in a subshell so that relative paths keep their meaning.
(bash "$top/scripts/install-deps.sh" && bash "$top/scripts/build.sh" build)
program="$top/build/app/orvane-template-editor"
if [ $# -eq 0 ]; then
  set -- "$top/build/app/templates/painting.template"
fi
exec "$program" "$@"
