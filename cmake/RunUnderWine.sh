#!/bin/sh
# Runs a Windows program under Wine for CTest: RunUnderWine.sh WINE PROGRAM [ARGUMENTS...].
#
# The program's output reaches CTest through a file rather than straight through CTest's
# pipe: the helper that Wine starts for the console of a program's own child processes
# (conhost.exe) inherits the program's standard handles and may outlive it, and CTest waits
# until every holder of its pipe is gone, so a finished test would count as timed out.
output=$(mktemp) || exit 1
"$@" > "$output" 2>&1
status=$?
cat "$output"
rm -f "$output"
exit $status
