#!/usr/bin/env bash
# Builds and runs every test: natively, under ASan and UBSan, under TSan what is concurrent, and the
# Windows build under Wine. Ends with the number of tests that passed and failed, over all of them.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" g++-mingw-w64-x86-64-posix wine64 wine binutils libxml2-utils \
  dpkg-dev file pkg-config unzip

passed=0
failed=0

# run NAME COMMAND... : a GoogleTest program or a script that ends with "N passed, N failed".
run() {
  local name=$1 log result=0
  shift
  log=$(mktemp)
  begin "$name"
  "$@" >"$log" 2>&1 </dev/null || result=$?
  local good bad
  good=$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\..*/\1/p; s/^([0-9]+) passed, .*/\1/p' "$log")
  bad=$(sed -nE 's/^\[  FAILED  \] ([0-9]+) tests?, .*/\1/p; s/.* passed, ([0-9]+) failed$/\1/p' "$log")
  # A program that ended badly counts as a failure, whatever it printed; so does one that ran nothing.
  if [ "$result" -ne 0 ] && [ "${bad:-0}" -eq 0 ]; then bad=1; fi
  if [ "${good:-0}" -eq 0 ] && [ "${bad:-0}" -eq 0 ]; then bad=1; fi
  passed=$((passed + ${good:-0}))
  failed=$((failed + ${bad:-0}))
  if [ "${bad:-0}" -ne 0 ]; then cat "$log"; else echo "${good:-0} passed"; fi
  rm -f "$log"
}

suites() {
  local name=$1
  shift
  for suite in outside inside injection; do
    run "$name: $suite" "$@" "build/$name/bin/varmex_${suite}_tests"
  done
}

concurrent='tConcurrency*:*Threads*'

build linux
suites linux
run 'linux: exports' tests/checkExports.sh build/linux/lib/libvarmex.so
run 'linux: command' tests/commandTest.sh build/linux/bin/varmex
run 'linux: draw' tests/drawTest.sh build/linux/bin/varmex
run 'linux: install' tests/installTest.sh build/linux

build linux-asan
VARMEX_TEST_ROUNDS=500 suites linux-asan
run 'linux-asan: hostile' tests/hostileTest.sh build/linux-asan/bin/varmex

build linux-tsan varmex_outside_tests varmex_writer
TSAN_OPTIONS=suppressions=$PWD/tests/tsan.supp VARMEX_TEST_ROUNDS=300 run 'linux-tsan: outside' \
  build/linux-tsan/bin/varmex_outside_tests "--gtest_filter=$concurrent"

build windows
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
begin 'setting up Wine'
quietly wineboot -i
for suite in outside inside injection; do
  VARMEX_TEST_ROUNDS=300 run "windows: $suite" wine "build/windows/bin/varmex_${suite}_tests.exe"
done
run 'windows: exports' tests/checkExports.sh build/windows/bin/varmex.dll
run 'windows: install' tests/installTest.sh build/windows
wineserver -k || true

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
