# Shared by the scripts that test in steps: where the project is, a folder to work in, and the count.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

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

# The last line of the script.
finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}
