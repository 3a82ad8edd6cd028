#!/usr/bin/env bash
# Installs what building and testing FileIO needs on Debian or Ubuntu, skipping what is
# already there. Runs as root, or through sudo.
set -euo pipefail

packages=(
    g++ clang clang-format cmake ninja-build pkg-config
    googletest libgtest-dev libgmock-dev libbenchmark-dev libcurl4-openssl-dev
    g++-mingw-w64-x86-64-posix wine64 locales
)

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"

# The locale-independence tests need a locale whose decimal point is a comma.
need_locale() { ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; }

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
if need_locale; then
    $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
