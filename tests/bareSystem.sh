#!/usr/bin/env bash
# bareSystem.sh FOLDER : unpacks a fresh Debian of the release that runs here, with nothing beyond its
# base but C++'s runtime and Python, into the folder. Takes root and debootstrap. It is fetched once
# and kept as build/RELEASE.tar.
set -euo pipefail
export PATH=$PATH:/usr/sbin
. /etc/os-release
kept=build/$VERSION_CODENAME.tar
exec 9>"$kept.lock"
flock 9
if [ ! -e "$kept" ]; then
  made=$(mktemp -d)
  trap 'rm -rf "$made" "$kept.new"' EXIT
  debootstrap --variant=minbase --include=libstdc++6,python3-venv "$VERSION_CODENAME" "$made"
  rm -f "$made"/var/cache/apt/archives/*.deb
  tar -C "$made" -cf "$kept.new" .
  mv "$kept.new" "$kept"
fi
flock -u 9
mkdir -p "$1"
tar -C "$1" -xf "$kept"
