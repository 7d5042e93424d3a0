#!/usr/bin/env bash
# Builds the Python wheels, build/wheels/*.whl: one for each platform that is named (linux, windows),
# or for both. They carry the library and are installed with pip.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" python3-build python3-setuptools python3-wheel python3-venv
platforms=("$@")
[ ${#platforms[@]} -gt 0 ] || platforms=(linux windows)

for platform in "${platforms[@]}"; do
  [ "$platform" != windows ] || install g++-mingw-w64-x86-64-posix
  build "$platform" varmex_python
  tag=linux_x86_64
  [ "$platform" = linux ] || tag=win_amd64
  rm -f build/wheels/varmex-*-"$tag".whl
  rm -rf "build/$platform/python/build" "build/$platform/python/varmex.egg-info"
  /usr/bin/python3 -m build --wheel --no-isolation --outdir build/wheels \
    -C--build-option=--plat-name="$tag" "build/$platform/python" >"build/$platform/wheel.log" 2>&1 ||
    { cat "build/$platform/wheel.log"; exit 1; }
done
ls build/wheels/*.whl
