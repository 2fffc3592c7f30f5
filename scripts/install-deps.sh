#!/usr/bin/env bash
# Installs the Debian packages listed in packages.txt that are not installed yet.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
missing=()
while read -r pkg; do
  pkg=${pkg%%#*}; pkg=${pkg//[[:space:]]/}
  [ -n "$pkg" ] || continue
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep 'install ok installed' >/dev/null; then
    missing+=("$pkg")
  fi
done < "$here/packages.txt"
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
