#!/usr/bin/env bash
# The library's main job on the bundled sample project: reads samples/robot.mdl (text form),
# writes it in the binary form, reads that back and writes the text form again, printing a
# summary of each file; the two text forms must be byte-identical.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset release > /dev/null
cmake --build --preset release --target fileio-convert > /dev/null

convert=build/release/fileio-convert
out=build/sample
mkdir -p "$out"

echo "== samples/robot.mdl -> $out/robot.bin (binary)"
"$convert" samples/robot.mdl "$out/robot.bin"
echo "== $out/robot.bin -> $out/robot.mdl (text)"
"$convert" "$out/robot.bin" "$out/robot.mdl"

if cmp -s samples/robot.mdl "$out/robot.mdl"; then
    echo "Round trip text -> binary -> text: identical ($(wc -c < samples/robot.mdl) bytes)"
else
    echo "Round trip text -> binary -> text: the texts differ" >&2
    exit 1
fi
