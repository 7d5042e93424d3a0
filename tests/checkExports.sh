#!/usr/bin/env bash
# checkExports.sh LIBRARY : the exported names are those of exports.txt, all of the version VARMEX_19,
# and a DLL needs none but the system's own.
set -uo pipefail
library=$1
expected=$(dirname "$0")/exports.txt
passed=0
failed=0
check() {
  if [ "$1" -eq 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}

case $library in
  *.dll)
    table=$(x86_64-w64-mingw32-objdump -p "$library")
    sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$table" |
      sed -nE 's/^\s*\[ *[0-9]+\] (\S+).*/\1/p' | LC_ALL=C sort | diff "$expected" -
    check $?
    foreign=$(sed -nE 's/^\s*DLL Name: (.*)/\1/p' <<<"$table" |
      grep -viE '^(kernel32|msvcrt|advapi32|shell32|shlwapi)\.dll$')
    [ -z "$foreign" ] || echo "needs $foreign"
    [ -z "$foreign" ]
    check $?
    ;;
  *)
    # The version itself is listed as an absolute symbol.
    nm -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | LC_ALL=C sort |
      diff <(sed 's/$/@@VARMEX_19/' "$expected") -
    check $?
    ;;
esac
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
