#!/usr/bin/env bash
# compilers.sh [RELEASE COMPILER]... : builds the library, the command and the inside tests in a fresh
# system of that release of Debian with its compiler and its packages of Boost (bookworm's is 1.74, the
# oldest that will do) and GoogleTest, and runs the tests. Without arguments: with GCC and Clang from the
# oldest to the newest of Debian stable. Takes root. The systems are kept in build/.
source "$(dirname "$0")/common.sh"
install debootstrap
[ $# -gt 0 ] || set -- bookworm g++-12 bookworm clang++-14 trixie g++-14 trixie clang++-19

# run_in SYSTEM COMMAND... : with a /proc, which the tests look at, for as long as it runs.
run_in() {
  unshare --mount sh -c 'mount -t proc proc "$0/proc" && exec chroot "$0" env -i \
    PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"' "$@"
}

while [ $# -gt 0 ]; do
  release=$1 compiler=$2 system=$PWD/build/$1
  shift 2
  if [ ! -e "$system/usr/bin/cmake" ]; then
    begin "setting up $release"
    quietly debootstrap --variant=minbase "$release" "$system"
    quietly run_in "$system" apt-get install -y --no-install-recommends cmake ninja-build g++ libboost-dev \
      libcli11-dev nlohmann-json3-dev libgtest-dev
  fi
  quietly run_in "$system" apt-get install -y --no-install-recommends "${compiler/clang++/clang}"
  rm -rf "$system/srv/varmex"
  mkdir "$system/srv/varmex"
  tar -c --exclude=./build --exclude=./.git . | tar -x -C "$system/srv/varmex"
  begin "building with $compiler of $release"
  # As elsewhere than in the presets: a warning of a new compiler is told, and ends nothing.
  run_in "$system" cmake -S /srv/varmex -B "/srv/build-$compiler" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_COMPILER="$compiler" -DVARMEX_GOOGLETEST_SOURCE=none >/dev/null
  run_in "$system" cmake --build "/srv/build-$compiler" --target varmex_tool varmex_inside_tests -- --quiet
  run_in "$system" "/srv/build-$compiler/bin/varmex_inside_tests" --gtest_brief=1
  run_in "$system" env VARMEX_FSROOT=/srv/varmex/samples "/srv/build-$compiler/bin/varmex" show >/dev/null
  boost=$(sed -n 's/#define BOOST_LIB_VERSION "\(.*\)"/\1/p' "$system/usr/include/boost/version.hpp")
  echo "$release: $compiler, Boost ${boost//_/.}"
done
