#!/usr/bin/env bash
# onWine.sh PROGRAM ARGUMENT... : a Windows program whose machine has the installation that lies below
# VARMEX_FSROOT, files and registry, as the test scripts make them for Linux. For a prefix that is
# the test's own (tests/inWine.sh).
set -uo pipefail
windows=$WINEPREFIX/drive_c/windows
root=${VARMEX_FSROOT-/none}
data=$WINEPREFIX/drive_c/ProgramData/PXISA
imported=$WINEPREFIX/registry.imported

# put FILE TARGET : at once, where it differs; without the file there is none.
put() {
  [ -e "$1" ] || { rm -rf "$2"; return; }
  cmp -s "$1" "$2" && return
  rm -rf "$2.next.$$"
  cp -r "$1" "$2.next.$$"
  [ ! -d "$1" ] && [ ! -d "$2" ] || rm -rf "$2"
  mv "$2.next.$$" "$2"
}

putFiles() {
  put "$root/etc/pxi/pxisys.ini" "$windows/pxisys.ini"
  put "$root/etc/pxi/pxiesys.ini" "$windows/pxiesys.ini"
}

# The service library of LD_LIBRARY_PATH.
putService() { put "${LD_LIBRARY_PATH-/none}/dunmorsvc.dll" "$windows/system32/dunmorsvc.dll"; }

putRegistry() {
  local registry=$root/etc/pxi/registry.reg
  [ -e "$registry" ] || [ -e "$imported" ] || return
  ! cmp -s "$registry" "$imported" || return
  for key in Corvane PXISA 'WOW6432Node\Corvane'; do
    wine reg delete "HKLM\\SOFTWARE\\$key" /f >/dev/null 2>&1
  done
  put "$registry" "$imported"
  [ -e "$registry" ] || return
  # Of a file in bytes this regedit takes the bytes of lists of texts for characters.
  { printf '\xff\xfe' && iconv -f UTF-8 -t UTF-16LE "$registry"; } >"$imported.reg"
  wine regedit /S "Z:${imported//\//\\}.reg" >/dev/null 2>&1
}

mkdir -p "$data"
putRegistry
putService
putFiles
# What changes while the program runs reaches it, too.
if [ "${2-}" = watch ]; then
  while sleep 0.2 && kill -0 $$ 2>/dev/null; do putFiles; done >/dev/null 2>&1 &
fi
exec wine "$@"
