#!/usr/bin/env bash
# Installs what is missing, builds, and opens the editor on the bundled example.
# Arguments go to the program, which runs in the caller's folder so that
# relative paths mean what the caller meant.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
(cd "$top" && bash scripts/install-deps.sh && bash scripts/build.sh build)
exec "$top/build/app/orvane-template-editor" "$@"
