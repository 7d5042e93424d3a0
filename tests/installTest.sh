#!/usr/bin/env bash
# installTest.sh BUILD... : installs or packs each build, and builds and runs the examples against
# every form that comes out, in empty folders. The Windows ones run under Wine, whose prefix
# WINEPREFIX names. Debian's packages are packageTest.sh's.
source "$(dirname "$0")/steps.sh"
# Where only Ninja is, it works.
export CMAKE_GENERATOR=Ninja

# The devices of the sample, as the program lists them. It finds its library at LD_LIBRARY_PATH.
lists() {
  local output
  output=$(VARMEX_FSROOT=$here/samples "$@") || return 1
  echo "$output"
  grep -qE '^PXI1Slot2 +5:0\.1  TriggerBus1' <<<"$output" &&
    grep -qE '^PXI3Slot4 +82:8\.2  TriggerBus1' <<<"$output"
}

# The installation of the sample, as the command prints it. It prints all of it: one that nobody reads to
# its end would fail.
shows() { "$@" show >"$work/shown" && grep '^Chassis 3: Havrel' "$work/shown"; }

# withCMake PREFIX [ARGUMENT...] : builds the examples against what lies below the prefix.
withCMake() {
  local build
  build=$(mktemp -d -p "$work")
  cmake -S "$here/examples" -B "$build" -DCMAKE_PREFIX_PATH="$1" "${@:2}" &&
    cmake --build "$build" && cp "$build"/listDevices* "$work"
}

withPkgConfig() {
  export PKG_CONFIG_PATH=$1/lib/pkgconfig
  gcc "$here/examples/listDevices.c" -o "$work/listDevices" $(pkg-config --cflags --libs varmex) &&
    g++ -std=c++17 "$here/examples/listDevices.cpp" -o "$work/listDevicesCpp" \
      $(pkg-config --cflags --libs varmex)
}

listBoth() {
  LD_LIBRARY_PATH=$1 lists "$work/listDevices" && LD_LIBRARY_PATH=$1 lists "$work/listDevicesCpp"
}

# takenIn NAME LINES : a project that takes the sources in by these lines, with its own settings as they
# were.
takenIn() {
  local project=$work/$1
  mkdir "$project"
  cp "$here"/examples/listDevices.c "$project"
  cat >"$project/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES C CXX)
$2
add_executable(listDevices listDevices.c)
target_link_libraries(listDevices PRIVATE varmex::varmex)
END
  cmake -S "$project" -B "$project/build" && ! grep -q -- -Werror "$project/build/build.ninja"
}

# It builds nothing of them but the library.
buildsTaken() {
  local project=$work/$1
  cmake --build "$project/build" &&
    cmake --install "$project/build" --prefix "$project/installed" &&
    lists "$project/build/listDevices" && [ ! -e "$project/installed" ] &&
    [ -z "$(find "$project/build" -name 'varmex_*tests' -o -name CPackConfig.cmake -o \
      -path '*/bin/varmex' -o -path '*varmex_tool.dir*.o')" ]
}

# As an archive of the sources.
fetched() {
  tar -C "$here" --exclude=./build --exclude=./.git -cf "$work/varmex.tar" . &&
    takenIn fetched "include(FetchContent)
      FetchContent_Declare(varmex URL file://$work/varmex.tar)
      FetchContent_MakeAvailable(varmex)"
}

# refuses OPTION... : a target that varmex does not serve, in a sentence.
refuses() {
  ! cmake -S "$here" -B "$(mktemp -d -p "$work")" -DVARMEX_TESTS=OFF \
    -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY "$@" >"$work/refusal" 2>&1 &&
    grep -q 'varmex is for 64-bit x86 alone' "$work/refusal"
}

# What has come along below share/.
shares() {
  ls "$1"/share/{bash-completion/completions/varmex,zsh/{vendor-completions,site-functions}/_varmex} \
    "$1"/share/{fish/vendor_completions.d/varmex.fish,man/man1/varmex.1,varmex/varmex.schema.json} \
    "$1"/share/doc/varmex/{getting-started.md,examples/listDevices.c}
}

testLinux() {
  local installed=$work/installed
  try 'install' cmake --install "$1" --prefix "$installed"
  try 'manual, schema, completions and documents' shares "$installed"
  try 'the installed command' shows env VARMEX_FSROOT="$here/samples" "$installed/bin/varmex"
  # Where it was moved, it works as well.
  mv "$installed" "$work/moved"
  try 'CMake' withCMake "$work/moved"
  try 'built with CMake' listBoth "$work/moved/lib"
  rm "$work"/listDevices*
  try 'pkg-config' withPkgConfig "$work/moved"
  try 'built with pkg-config' listBoth "$work/moved/lib"
  rm "$work"/listDevices*
  try 'FetchContent' fetched
  try 'built with FetchContent' buildsTaken fetched
  try '32 bits' refuses -DCMAKE_CXX_FLAGS=-m32
  try 'a big-endian target' refuses -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
    -DCMAKE_CXX_COMPILER_TARGET=s390x-linux-gnu
}

# There is no root of all paths: the description lies in the prefix's own Windows folder meanwhile.
listInWine() {
  local windows=$WINEPREFIX/drive_c/windows result=0
  cp "$here"/samples/etc/pxi/pxi*sys.ini "$windows"
  cp "$work"/zip/*/bin/varmex.dll "$work"
  lists wine "$work/listDevices.exe" && lists wine "$work/listDevicesCpp.exe" || result=1
  shows wine "$work"/zip/*/bin/varmex.exe || result=1
  rm "$windows"/pxi*sys.ini
  return "$result"
}

# The files for Microsoft's linker are those of what ships.
takenInByMinGW() {
  CMAKE_TOOLCHAIN_FILE=$here/cmake/mingw.cmake takenIn mingw "add_subdirectory($here varmex)" &&
    ! grep -q 'varmex\.def' "$work/mingw/build/build.ninja"
}

testWindows() {
  rm -f "$work"/listDevices*
  try 'the zip' cpack --config "$1/CPackConfig.cmake" -B "$work/packages"
  try 'its content' unzip -q "$work/packages/*.zip" -d "$work/zip"
  # The prefix lies outside of the cross compiler's own tree.
  try 'CMake and the zip' withCMake "$work" -Dvarmex_DIR="$(echo "$work"/zip/*/lib/cmake/varmex)" \
    -DCMAKE_TOOLCHAIN_FILE="$here/cmake/mingw.cmake" -DCMAKE_EXE_LINKER_FLAGS=-static
  try 'built with the zip' listInWine
  try 'add_subdirectory' takenInByMinGW
}

for build in "$@"; do
  case $build in
    *windows) testWindows "$build" ;;
    *) testLinux "$build" ;;
  esac
done
finish
