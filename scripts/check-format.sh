#!/usr/bin/env bash
# Fails, listing the files, when a C++ source of the tree differs from the project's
# .clang-format. `scripts/check-format.sh --fix` rewrites them instead.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.cpp' '*.h' '*.inc')
if [ "${1:-}" = "--fix" ]; then
    clang-format -i "${sources[@]}"
    exit 0
fi
unformatted=$(clang-format --dry-run "${sources[@]}" 2>&1 | grep -o '^[^:]*\.\(cpp\|h\|inc\):' | sort -u | tr -d ':' || true)
if [ -n "$unformatted" ]; then
    echo "These files differ from .clang-format (scripts/check-format.sh --fix rewrites them):" >&2
    printf '    %s\n' $unformatted >&2
    exit 1
fi
echo "Format: all ${#sources[@]} sources follow .clang-format"
