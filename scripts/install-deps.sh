#!/usr/bin/env bash
# Installs what building and testing FileIO needs on Debian or Ubuntu, skipping what is
# already there. Runs as root, or through sudo.
#
#   scripts/install-deps.sh               everything the test command needs
#   scripts/install-deps.sh --build-only  only what building the library and the fileio
#                                         tool needs (no test frameworks, cross compiler or Wine)
set -euo pipefail

build_packages=(g++ cmake ninja-build pkg-config libcurl4-openssl-dev)
test_packages=(
    clang clang-format googletest libgtest-dev libgmock-dev libbenchmark-dev
    g++-mingw-w64-x86-64-posix wine64 locales
)

case "${1:-}" in
    "") packages=("${build_packages[@]}" "${test_packages[@]}") ;;
    --build-only) packages=("${build_packages[@]}") ;;
    *) echo "usage: $0 [--build-only]" >&2; exit 2 ;;
esac

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The locale-independence tests need a locale whose decimal point is a comma.
if [ "${1:-}" != "--build-only" ] && ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
