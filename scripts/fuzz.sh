#!/usr/bin/env bash
# Fuzzes one target for a given time: scripts/fuzz.sh TARGET SECONDS
# Targets: template codeset settings pointer_file xml_langstr numbers
# natural_order file_names zip. Builds them with clang in build-fuzz, grows
# a working corpus in build-fuzz/corpus/TARGET from the seeds in
# tests/fuzz/corpus/TARGET (and the shipped files), and runs at the lowest
# priority. A failing input is written to build-fuzz/findings/.
set -euo pipefail
if [ $# -ne 2 ]; then
  echo "usage: $0 TARGET SECONDS" >&2
  exit 2
fi
target=$1
seconds=$2
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
# The fuzzer's compiler and runtime are needed here only, not by the builds and tests.
for pkg in clang libclang-rt-14-dev; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep 'install ok installed' >/dev/null; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$pkg"
  fi
done
if [ ! -f build-fuzz/CMakeCache.txt ]; then
  CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DOV_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
fi
nice -n 19 ninja -C build-fuzz "ov_fuzz_$target"
seeds=(tests/fuzz/corpus/"$target")
case $target in
  template) seeds+=(resources/install/templates) ;;
  codeset) seeds+=(resources/install/codesets) ;;
esac
work=build-fuzz/corpus/$target
mkdir -p "$work" build-fuzz/findings
exec nice -n 19 "build-fuzz/tests/fuzz/ov_fuzz_$target" -max_total_time="$seconds" -timeout=10 \
  -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 -artifact_prefix=build-fuzz/findings/"$target"- \
  "$work" "${seeds[@]}"
