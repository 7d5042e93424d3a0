# Shared by the scripts: where the project is, and how it gets what it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# install PACKAGE... : from Debian, what is missing.
install() {
  local missing=()
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local root=()
  [ "$(id -u)" -eq 0 ] || root=(sudo)
  "${root[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

build_tools=(cmake ninja-build g++ libboost1.81-dev libcli11-dev nlohmann-json3-dev googletest)

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  local targets=()
  [ $# -eq 0 ] || targets=(--target "$@")
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" "${targets[@]}" -- --quiet
}
