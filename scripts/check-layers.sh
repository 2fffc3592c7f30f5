#!/usr/bin/env bash
# Fails when a file of one library includes a header of a library above it.
# The libraries from the bottom up; each may include its own headers and
# those of the libraries listed before it, never those after it.
set -euo pipefail
order=(core lang docs gui frame widgets docs_gui app)

top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
declare -A rank
for i in "${!order[@]}"; do rank[${order[$i]}]=$i; done

bad=0
for layer in "${order[@]}"; do
  if [ "$layer" = app ]; then dir=app; else dir=lib/$layer; fi
  [ -d "$dir" ] || continue
  while IFS=: read -r file line text; do
    used=$(sed -E 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"([a-z_]+)\/.*/\1/' <<<"$text")
    [ -n "${rank[$used]+x}" ] || continue
    if [ "${rank[$used]}" -gt "${rank[$layer]}" ]; then
      echo "$file:$line: $layer may not include a header of $used (above it)" >&2
      bad=1
    fi
  done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"[a-z_]+/' "$dir" --include='*.h' --include='*.cpp' || true)
done
if [ "$bad" -ne 0 ]; then
  echo "Layering: allowed order from the bottom up is: ${order[*]}" >&2
  exit 1
fi
echo "Layering: every include points down (${order[*]})"
