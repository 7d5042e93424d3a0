#!/usr/bin/env bash
# Formats the sources; with --check only tells which are not formatted.
source "$(dirname "$0")/common.sh"
install clang-format-14
mapfile -t files < <(git ls-files -co --exclude-standard '*.h' '*.hpp' '*.cpp' '*.c')
if [ "${1:-}" = --check ]; then
  clang-format-14 --dry-run --Werror "${files[@]}"
else
  clang-format-14 -i "${files[@]}"
fi
