# Shared by the scripts: where the project is, and how it gets what it needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# A machine without locales must not have every Perl program complain.
export LC_ALL=C.UTF-8

# begin TEXT : tells of a step that takes its time.
begin() { echo "== $*" >&2; }

# quietly COMMAND... : its output only if it fails.
quietly() {
  local log result=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || result=$?
  [ "$result" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$result"
}

# install PACKAGE... : from Debian, what is missing. Of "one|another" either will do.
install() {
  local missing=() root=()
  for package in "$@"; do
    grep -q '^ii' <(dpkg-query -W -f='${db:Status-Abbrev}\n' ${package//|/ } 2>/dev/null) ||
      missing+=("${package%%|*}")
  done
  [ ${#missing[@]} -eq 0 ] && return
  if [ "$(id -u)" -ne 0 ]; then
    # A password is asked for here, where it can be seen.
    if ! command -v sudo >/dev/null || ! sudo -v; then
      printf '%s\n' "These packages are missing, and installing them takes root. As root, run" \
        "    apt-get install ${missing[*]}" "and then start $0 again." >&2
      exit 1
    fi
    root=(sudo)
  fi
  begin "installing ${missing[*]}"
  root+=(env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8)
  quietly "${root[@]}" apt-get update
  quietly "${root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
}

build_tools=(cmake ninja-build g++ 'libboost-dev|libboost1.81-dev' libcli11-dev nlohmann-json3-dev
  googletest)

# build PRESET [TARGET...] : into the folder of its name.
build() { build_in "build/$1" "$@"; }

# build_in FOLDER PRESET [CMAKE OPTION or TARGET...]
build_in() {
  local folder=$1 preset=$2 options=() targets=()
  shift 2
  for argument in "$@"; do
    case $argument in
      -*) options+=("$argument") ;;
      *) targets+=("$argument") ;;
    esac
  done
  [ ${#targets[@]} -eq 0 ] || targets=(--target "${targets[@]}")
  begin "building $folder"
  cmake --preset "$preset" -B "$folder" "${options[@]}" >/dev/null
  cmake --build "$folder" "${targets[@]}" -- --quiet
}
