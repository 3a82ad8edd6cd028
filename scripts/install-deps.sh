#!/usr/bin/env bash
# Installs what building and testing FileIO needs on Debian or Ubuntu, skipping what is
# already there. Runs as root, or through sudo.
set -euo pipefail

packages=(
    g++ clang cmake ninja-build pkg-config
    googletest libgtest-dev libgmock-dev libbenchmark-dev
    g++-mingw-w64-x86-64-posix wine64
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
