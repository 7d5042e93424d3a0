#!/usr/bin/env bash
# Builds Debian's packages and the library alone (the preset linux) twice, from nothing: in build/reproducible,
# and in folders of other names, at another time, with another time zone and umask, the library outside of
# its sources. Each pair must be the same, byte for byte.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" debhelper dh-python dpkg-dev
export CCACHE_DISABLE=1 # what one build left would be the other's
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
result=0

# same FILE FILE
same() {
  if cmp "$1" "$2"; then echo "same: $(basename "$1")"; else result=1; fi
}

rm -rf build/reproducible
scripts/packages.sh build/reproducible/packages
build_in build/reproducible/library linux -DVARMEX_TESTS=OFF varmex
again=$work/again/elsewhere
(
  umask 077
  export TZ=Asia/Tokyo
  scripts/packages.sh "$again"
  begin "building $work/library"
  cmake -S "$again/varmex" --preset linux -B "$work/library" -DVARMEX_TESTS=OFF >/dev/null
  cmake --build "$work/library" --target varmex -- --quiet
)
for package in build/reproducible/packages/*.deb; do same "$package" "$again/$(basename "$package")"; done
same build/reproducible/library/lib/libvarmex.so.19 "$work/library/lib/libvarmex.so.19"
exit "$result"
