#!/usr/bin/env bash
# packages.sh [FOLDER] : builds Debian's packages into FOLDER (build/packages), from a copy of the
# sources in it. What has been built there already is built again only where it has changed.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" build-essential debhelper dh-python dpkg-dev
folder=${1:-build/packages}
copy=$folder/varmex

begin "building $folder"
mkdir -p "$copy"
find "$copy" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
rm -f "$folder"/*.{deb,changes,buildinfo}
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$copy"
cd "$copy"
quietly dpkg-buildpackage -us -uc -b -nc
