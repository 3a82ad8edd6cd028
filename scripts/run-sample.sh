#!/usr/bin/env bash
# The library's main job on the bundled sample: a project made on another machine opens here.
#
# samples/Documents/Robot/robot.prj was saved on a Windows machine; some of its models, maps
# and sounds are stored as that machine's absolute paths (C:/Users/ann/Documents/...). The
# script installs what building needs, builds the release library and the fileio tool, copies
# the sample to build/sample and tells the story with the tool: what the project is, which of
# its files are missing here, one folder mapping that relinks them all (nothing is asked),
# the project checked in both forms, and a text -> binary -> text round trip.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh --build-only
cmake --preset release -DFILEIO_BUILD_TESTS=OFF > /dev/null
cmake --build --preset release --target fileio -j "$(nproc)" > /dev/null

fileio="$PWD/build/release/fileio"
work=build/sample
rm -rf "$work"
mkdir -p "$work"
cp -r samples/Documents "$work/"
cd "$work/Documents/Robot"

# Runs the tool as a person would type it; a status other than 0 is shown, not fatal.
run() {
    echo
    echo "\$ fileio $*"
    local status=0
    "$fileio" "$@" < /dev/null || status=$?
    [ "$status" -eq 0 ] || echo "(exit status $status)"
}

echo "== The project, in both of its forms"
run info robot.prj robot-binary.prj
echo
echo "== Its files, as this machine sees them"
run deps robot.prj
echo
echo "== Ann's Documents/Robot folder is this one: one mapping relinks the project"
run relink robot.prj --map 'C:\Users\ann\Documents\Robot=.'
run deps robot.prj
echo
echo "== Both forms read whole, and the text survives text -> binary -> text"
run check robot.prj robot-binary.prj
run convert robot.prj robot.bin
run convert robot.bin robot-again.prj
if cmp -s robot.prj robot-again.prj; then
    echo "robot.prj and robot-again.prj: byte-identical ($(wc -c < robot.prj) bytes)"
else
    echo "robot.prj and robot-again.prj differ" >&2
    exit 1
fi
