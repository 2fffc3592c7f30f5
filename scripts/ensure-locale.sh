#!/usr/bin/env bash
# Generates a locale (for example sv_SE.UTF-8) when the system lacks it.
set -euo pipefail
want=$1
norm=$(echo "$want" | tr 'A-Z' 'a-z' | sed 's/utf-8/utf8/')
if locale -a 2>/dev/null | tr 'A-Z' 'a-z' | grep -x "$norm" >/dev/null; then
  exit 0
fi
if ! grep -q "^$want UTF-8" /etc/locale.gen 2>/dev/null; then
  echo "$want UTF-8" >> /etc/locale.gen
fi
locale-gen >/dev/null
