# Shared by the scripts that test in steps: where the project is, a folder to work in, and the count.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

# newRoot [FILE...] : another installation for VARMEX_FSROOT, in a root of its own: empty, or of these.
newRoot() {
  VARMEX_FSROOT=$(mktemp -d -p "$work")
  mkdir -p "$VARMEX_FSROOT/etc/pxi" "$VARMEX_FSROOT/var/lib/PXISA"
  [ $# -eq 0 ] || cp -r "$@" "$VARMEX_FSROOT"
}

# The exported names, without that of their version.
exports() { sed -nE '/^ VARMEX_19@/!s/^ (.*)@VARMEX_19 .*/\1/p' "$here/debian/libvarmex19.symbols"; }

# try NAME COMMAND... : a step that must end well.
try() {
  if "${@:2}" >"$work/log" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "$1:"
    tail -n 30 "$work/log"
  fi
}

# is WANTED GOT WHAT
is() { try "$3" same "$1" "$2"; }

same() {
  printf 'wanted "%s", got "%s"\n' "$1" "$2"
  [ "$1" = "$2" ]
}

# ends STATUS PATTERN COMMAND... : its exit status, and a line that both outputs together hold.
ends() { try "${*:3}" endsWith "$@"; }

endsWith() {
  local output result=0
  output=$("${@:3}" 2>&1) || result=$?
  printf 'status %s, wanted %s and "%s" in\n%s\n' "$result" "$1" "$2" "$output"
  [ "$result" -eq "$1" ] && grep -qE -- "$2" <<<"$output"
}

# The last line of the script.
finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
