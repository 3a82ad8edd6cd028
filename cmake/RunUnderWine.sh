#!/bin/sh
# Runs a Windows program under Wine for CTest: RunUnderWine.sh WINE PROGRAM [ARGUMENTS...].
#
# The program's output reaches CTest through a file rather than straight through CTest's
# pipe: the helper that Wine starts for the console of a program's own child processes
# (conhost.exe) inherits the program's standard handles and may outlive it, and CTest waits
# until every holder of its pipe is gone, so a finished test would count as timed out.
#
# A test program always writes before it can fail (the test runner's banner comes first), so
# a failure without a byte of output means Wine did not start the program at all. That
# happened twice in 240 starts of a full run here; such a start is tried again, and said so,
# a few times before it counts.
launch_attempts=3
output=$(mktemp) || exit 1
attempt=1
while :; do
    "$@" > "$output" 2>&1
    status=$?
    if [ $status -eq 0 ] || [ -s "$output" ] || [ $attempt -ge $launch_attempts ]; then
        break
    fi
    echo "Wine ended with status $status before the program wrote anything; starting it again" >&2
    attempt=$((attempt + 1))
done
cat "$output"
rm -f "$output"
exit $status
