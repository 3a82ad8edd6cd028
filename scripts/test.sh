#!/usr/bin/env bash
# Checks the sources' format, then builds FileIO and runs every test: the Linux debug build,
# the same tests under AddressSanitizer + UndefinedBehaviorSanitizer, the pool tests under
# ThreadSanitizer, the fuzz targets for a bounded time, and the Windows cross build's tests
# under Wine; at the end it prints how large the tests are against the code.
# Any failure stops the run with a non-zero exit.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
echo "==== format ===="
scripts/check-format.sh

jobs=$(nproc)
step() { echo; echo "==== $* ===="; }

run_preset() {
    local preset=$1
    step "$preset: configure"
    cmake --preset "$preset" > "build/$preset.configure.log" 2>&1 || { cat "build/$preset.configure.log"; exit 1; }
    step "$preset: build"
    cmake --build --preset "$preset" -j "$jobs"
    step "$preset: test"
    ctest --preset "$preset" -j "$jobs"
}

mkdir -p build
run_preset debug
run_preset asan
run_preset tsan
run_preset fuzz

# One persistent Wine server serves every test process, and Wine's own services (which it
# starts with the first program a server sees) are up before the tests start: a test
# program that starts while they are still coming up can stall for minutes. wineboot
# builds the prefix on first use and starts the services.
export WINEPREFIX="$PWD/build/wineprefix" WINEDEBUG=-all
wine=$(command -v /usr/lib/wine/wine64 wine64 wine 2>/dev/null | head -n 1)
wineserver=$(command -v /usr/lib/wine/wineserver64 wineserver64 wineserver 2>/dev/null | head -n 1)
"$wineserver" -k 2> /dev/null || true
mkdir -p "$WINEPREFIX"
"$wineserver" -p
trap '"$wineserver" -k 2> /dev/null || true' EXIT
"$wine" wineboot --init > /dev/null 2>&1 || true
run_preset windows

step "test-to-code ratio"
scripts/test-ratio.sh
