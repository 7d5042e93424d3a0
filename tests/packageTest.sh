#!/usr/bin/env bash
# packageTest.sh FOLDER : the Debian packages in FOLDER (scripts/packages.sh): lintian, the ABI beside
# the one that source/varmex.abi keeps and, as root, installing, using, upgrading and removing them in
# a fresh system. Its base is kept in build/.
source "$(dirname "$0")/steps.sh"
packages=$(cd "$1" && pwd)

checked() { lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$packages"/*.changes; }

# The types that programs see, from the debug symbols of what is shipped. abidiff takes a dump that it
# can't parse for the same.
sameInterface() {
  xmllint --noout "$here/source/varmex.abi" &&
    "$here/scripts/abi.sh" "$packages" "$work/varmex.abi" &&
    abidiff "$here/source/varmex.abi" "$work/varmex.abi"
}

# A fresh system, without a network.
fresh() {
  root=$work/root
  "$here/tests/bareSystem.sh" "$root" && cp -r "$here/samples" "$root/srv" && files >"$work/before"
}

inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"; }

# What there is, but for what dpkg and the loader keep for themselves.
files() {
  find "$root" \( -path "$root/var/lib/dpkg" -o -path "$root/var/log" -o -path "$root/srv" \) -prune -o \
    -print | sort
}

installInside() {
  rm -rf "$root/tmp/packages"
  mkdir "$root/tmp/packages"
  cp "$@" "$root/tmp/packages"
  inside dpkg -i --recursive /tmp/packages && rm -r "$root/tmp/packages"
}

# used VERSION : the command, the package for Python and the loader find the library of that version.
used() {
  inside env VARMEX_FSROOT=/srv/samples varmex show | grep '^Chassis 3: Havrel' &&
    inside env VARMEX_FSROOT=/srv/samples python3 -c '
import importlib.metadata, varmex
assert importlib.metadata.version("varmex").startswith("19.")
with varmex.Session() as session: print([chassis.number for chassis in session.chassis])' |
    grep -qxF '[1, 2, 3]' &&
    [ "$(inside readlink -f /usr/lib/x86_64-linux-gnu/libvarmex.so.19)" = \
      "/usr/lib/x86_64-linux-gnu/libvarmex.so.$1" ] &&
    [ "$(inside dpkg-query -W -f '${Version}' libvarmex19)" = "$1" ]
}

# What the development package brings builds the examples, and they run inside.
developed() {
  cmake -G Ninja -S "$root/usr/share/doc/libvarmex-dev/examples" -B "$work/examples" \
    -DCMAKE_PREFIX_PATH="$root/usr" && cmake --build "$work/examples" &&
    cp "$work/examples/listDevices" "$root/srv" &&
    inside env VARMEX_FSROOT=/srv/samples /srv/listDevices | grep '^PXI1Slot2 ' &&
    [ -s "$(PKG_CONFIG_PATH=$root/usr/lib/x86_64-linux-gnu/pkgconfig pkg-config --variable=schema varmex)" ]
}

# The pages of the documents have each other and their pictures beside them.
linked() {
  (cd "$root/usr/share/doc/libvarmex-dev" && grep -ohE '\]\([^)#:]+' -- *.md | cut -c3- | xargs ls -d)
}

# The packages of a next version, which has another file behind the library's name.
makeNext() {
  local package
  mkdir "$work/next"
  for package in "$@"; do
    rm -rf "$work/unpacked"
    dpkg-deb -R "$package" "$work/unpacked" &&
      sed -i "s/^Version: $version/Version: $next/; s/(= $version)/(= $next)/" \
        "$work/unpacked/DEBIAN/control" || return 1
    if [ -e "$work"/unpacked/usr/lib/*/"libvarmex.so.$version" ]; then
      (cd "$work"/unpacked/usr/lib/* && mv "libvarmex.so.$version" "libvarmex.so.$next" &&
        ln -sf "libvarmex.so.$next" libvarmex.so.19) || return 1
      sed -i "s/libvarmex.so.$version/libvarmex.so.$next/" "$work/unpacked/DEBIAN/md5sums"
    fi
    dpkg-deb -b "$work/unpacked" "$work/next" || return 1
  done
}

removed() {
  inside dpkg --purge libvarmex19 libvarmex-dev varmex python3-varmex && files | diff "$work/before" -
}

inFreshSystem() {
  local debs version next
  version=$(dpkg-deb -f "$packages"/libvarmex19_*.deb Version)
  next=${version%.*}.1000
  mapfile -t debs < <(ls "$packages"/*.deb | grep -v dbgsym)
  try 'a fresh system' fresh
  try 'installing' installInside "${debs[@]}"
  try 'using' used "$version"
  try 'developing' developed
  try 'the documents' linked
  try 'the next version' makeNext "${debs[@]}"
  try 'upgrading' installInside "$work"/next/*.deb
  try 'using what was upgraded' used "$next"
  try 'removing' removed
}

try 'lintian' checked
try 'the ABI' sameInterface
if [ "$(id -u)" -eq 0 ] && command -v debootstrap >/dev/null; then
  inFreshSystem
else
  echo 'not installed: that takes root and debootstrap'
fi
finish
