#!/usr/bin/env bash
# inWine.sh COMMAND... : a command with a Wine prefix of its own, a copy of the one that WINEPREFIX
# names. What runs in it finds a machine as a test wants it, whatever runs beside it.
set -uo pipefail
template=$WINEPREFIX
WINEPREFIX=$(mktemp -d "$template-XXXXXX")
export WINEPREFIX
trap 'wineserver -k; rm -rf "$WINEPREFIX"' EXIT
# The system's files are shared, they are never written.
cp -al "$template/." "$WINEPREFIX"
for registry in "$WINEPREFIX"/*.reg; do
  cp --remove-destination "$template/${registry##*/}" "$registry"
done
"$@"
