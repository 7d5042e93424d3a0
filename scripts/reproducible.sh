#!/usr/bin/env bash
# Builds Debian's packages twice from nothing, in folders of other names, minutes apart, with another
# time zone and umask, and the library alone with the preset, once in a build folder outside of the
# sources: each pair must be the same, byte for byte.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" debhelper dh-python dpkg-dev
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
result=0

# same NAME FILE FILE
same() {
  if cmp "$2" "$3"; then echo "same: $1"; else result=1; fi
}

scripts/packages.sh "$work/first"
(
  umask 077
  TZ=Asia/Tokyo scripts/packages.sh "$work/again/elsewhere"
)
for package in "$work"/first/*.deb; do
  same "$(basename "$package")" "$package" "$work/again/elsewhere/$(basename "$package")"
done

copy=$work/first/varmex
for build in "$copy/build/linux" "$work/elsewhere"; do
  begin "building $build"
  cmake -S "$copy" --preset linux -B "$build" -DVARMEX_TESTS=OFF >/dev/null
  cmake --build "$build" --target varmex -- --quiet
done
same libvarmex.so.19 "$copy/build/linux/lib/libvarmex.so.19" "$work/elsewhere/lib/libvarmex.so.19"
exit "$result"
