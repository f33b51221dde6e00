#!/usr/bin/env bash
# Installs the Debian packages lumxml builds with, only those missing.
set -euo pipefail
packages=(build-essential cmake libxerces-c-dev libicu-dev libgtest-dev libbenchmark-dev
          libxml2-dev binutils clang libclang-rt-14-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${missing[@]}"
fi
