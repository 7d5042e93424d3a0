#!/usr/bin/env bash
# abi.sh [FOLDER [FILE]] : writes the interface of the library among the packages in FOLDER
# (build/packages, built if they are not there) into FILE (source/varmex.abi), which the tests compare
# with what is built. To be run, and its result committed, when the interface has grown.
source "$(dirname "$0")/common.sh"
install abigail-tools dpkg-dev
folder=${1:-build/packages}
file=${2:-source/varmex.abi}
ls "$folder"/libvarmex19-dbgsym_*.deb >/dev/null 2>&1 || scripts/packages.sh "$folder"

unpacked=$(mktemp -d)
trap 'rm -rf "$unpacked"' EXIT
for package in "$folder"/libvarmex{19,19-dbgsym,-dev}_*.deb; do dpkg-deb -x "$package" "$unpacked"; done
abidw --debug-info-dir "$unpacked/usr/lib/debug" --headers-dir "$unpacked/usr/include/varmex" \
  --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed \
  --type-id-style hash --out-file "$file" "$unpacked"/usr/lib/*/libvarmex.so.19
