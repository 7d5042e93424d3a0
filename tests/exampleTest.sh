#!/usr/bin/env bash
# exampleTest.sh BUILD : installs a build into an empty folder, and builds and runs the example there.
set -uo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
result=0
cmake --install "$1" --prefix "$work/installed" >/dev/null &&
  cmake -S "$here/examples" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/installed" >/dev/null &&
  cmake --build "$work/build" >/dev/null || result=1
output=$(VARMEX_FSROOT=$here/samples "$work/build/listDevices") || result=1
grep -q '^PXI1Slot2 *5:0\.1  TriggerBus1$' <<<"$output" || result=1
grep -q '^PXI3Slot4 *82:8\.2  TriggerBus1$' <<<"$output" || result=1
[ "$result" -eq 0 ] || echo "$output"
echo "$((1 - result)) passed, $result failed"
exit "$result"
