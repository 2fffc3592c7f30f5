#!/usr/bin/env bash
# Configures and builds one build folder: build.sh FOLDER [cmake options...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dir=$1; shift
cmake -S "$top" -B "$top/$dir" -G Ninja "$@" >/dev/null
ninja -C "$top/$dir"
