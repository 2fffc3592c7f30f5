#!/usr/bin/env bash
# Fails when a C++ file of the tree is not formatted with the project's .clang-format.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
command -v clang-format >/dev/null || bash scripts/install-deps.sh
files=$(git ls-files '*.cpp' '*.h' 2>/dev/null || find lib app tests bench -name '*.cpp' -o -name '*.h')
if ! clang-format --dry-run --Werror $files; then
  echo "Formatting: run clang-format -i on the files above" >&2
  exit 1
fi
echo "Formatting: every C++ file follows .clang-format"
