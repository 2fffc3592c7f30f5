#!/usr/bin/env bash
# Runs every test: the whole suite in a normal build under a virtual X
# display, then the suite that needs no display again under AddressSanitizer
# and UndefinedBehaviorSanitizer in a decimal-comma locale. Every stage runs
# even when an earlier one failed; the script fails at the end, naming the
# stages that failed.
set -uo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top" || exit 1

failed=()
stage() {
  local name=$1; shift
  echo "== $name"
  if ! "$@"; then
    echo "== $name: FAILED"
    failed+=("$name")
    return 1
  fi
}

jobs=$(nproc)
export G_DEBUG=gc-friendly

# Without the packages and the locale the later stages fail too, and say so.
stage "install dependencies" bash scripts/install-deps.sh
stage "sv_SE.UTF-8 locale" bash scripts/ensure-locale.sh sv_SE.UTF-8

if stage "build" bash scripts/build.sh build; then
  stage "tests" env MALLOC_CHECK_=2 xvfb-run -a -s "-screen 0 1280x1024x24" \
    ctest --test-dir build --output-on-failure -j "$jobs"
fi

if stage "sanitizer build" bash scripts/build.sh build-asan -DOV_SANITIZE=ON -DOV_BUILD_GUI_TESTS=OFF \
  -DCMAKE_BUILD_TYPE=Debug; then
  stage "sanitizer tests" env LC_ALL=sv_SE.UTF-8 ctest --test-dir build-asan --output-on-failure -j "$jobs"
fi

if [ ${#failed[@]} -gt 0 ]; then
  printf 'Failed stages:' >&2
  printf ' "%s"' "${failed[@]}" >&2
  printf '\n' >&2
  exit 1
fi
echo "All stages passed."
