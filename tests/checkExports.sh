#!/usr/bin/env bash
# checkExports.sh LIBRARY : the exported names are those that the library's package lists, all of the
# version VARMEX_19, and a DLL needs none but the system's own.
source "$(dirname "$0")/steps.sh"
library=$1

case $library in
  *.dll)
    table=$(x86_64-w64-mingw32-objdump -p "$library")
    try 'exported names' diff <(exports) <(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$table" |
      sed -nE 's/^\s*\[ *[0-9]+\] (\S+).*/\1/p' | LC_ALL=C sort)
    is '' "$(sed -nE 's/^\s*DLL Name: (.*)/\1/p' <<<"$table" |
      grep -viE '^(kernel32|msvcrt|advapi32|shell32|shlwapi)\.dll$')" "libraries that $library needs"
    ;;
  *)
    # The version itself is listed as an absolute symbol.
    try 'exported names' diff <(exports | sed 's/$/@@VARMEX_19/') \
      <(nm -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | LC_ALL=C sort)
    ;;
esac
finish
