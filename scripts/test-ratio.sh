#!/usr/bin/env bash
# Prints the size of the tests against the size of the code they test: non-blank lines of
# C++ sources in tests/ and fuzz/ against those in include/, src/, tools/ and examples/.
set -euo pipefail
cd "$(dirname "$0")/.."

lines() {
    git ls-files --cached --others --exclude-standard -- "$@" |
        grep -E '\.(h|hpp|cpp|cc|c|inc)$' | xargs -r cat | grep -c -v -E '^\s*$' || true
}
code=$(lines include src tools examples)
tests=$(lines tests fuzz)
echo "Tests: $tests lines, code: $code lines; tests are $((100 * tests / code)) % of the code"
