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

# try NAME COMMAND... : a step that must end well.
try() {
  local name=$1
  shift
  if "$@" >"$work/log" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "$name:"
    tail -n 30 "$work/log"
  fi
}

# is WANTED GOT WHAT
is() {
  if [ "$1" = "$2" ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf '%s: wanted "%s", got "%s"\n' "$3" "$1" "$2"
  fi
}

# ends STATUS PATTERN COMMAND... : its exit status, and a line that both outputs together hold.
ends() {
  local status=$1 pattern=$2 output result=0
  shift 2
  output=$("$@" 2>&1) || result=$?
  if [ "$result" -eq "$status" ] && grep -qE -- "$pattern" <<<"$output"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf '%s: status %s, wanted %s and "%s" in\n%s\n' "$*" "$result" "$status" "$pattern" "$output"
  fi
}

# The last line of the script.
finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
