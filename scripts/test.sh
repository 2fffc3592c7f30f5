#!/usr/bin/env bash
# Runs every test: the whole suite in a normal build under a virtual X
# display, then the suite that needs no display again under AddressSanitizer
# and UndefinedBehaviorSanitizer in a decimal-comma locale.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
bash scripts/install-deps.sh
bash scripts/ensure-locale.sh sv_SE.UTF-8

jobs=$(nproc)
export G_DEBUG=gc-friendly
bash scripts/build.sh build
MALLOC_CHECK_=2 xvfb-run -a -s "-screen 0 1280x1024x24" ctest --test-dir build --output-on-failure -j "$jobs"

bash scripts/build.sh build-asan -DOV_SANITIZE=ON -DOV_BUILD_GUI_TESTS=OFF -DCMAKE_BUILD_TYPE=Debug
LC_ALL=sv_SE.UTF-8 ctest --test-dir build-asan --output-on-failure -j "$jobs"
