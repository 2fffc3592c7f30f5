#!/usr/bin/env bash
# Installs what is missing, builds, and opens the editor on the bundled example.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
bash scripts/install-deps.sh
bash scripts/build.sh build
exec build/app/orvane-template-editor "$@"
