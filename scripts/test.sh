#!/usr/bin/env bash
# Builds and runs every test: natively, under ASan and UBSan, under TSan what is concurrent, and the
# Windows build under Wine. Tests run beside each other and beside the builds that follow. Ends with
# the number of tests that passed and failed, over all of them.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" g++-mingw-w64-x86-64-posix clang-14 lld-14 llvm-14 wine64 wine \
  abigail-tools binutils build-essential chromium chromium-driver debhelper debootstrap dh-python dpkg-dev eslint file fish \
  fonts-liberation librsvg2-bin libxml2-utils lintian mypy nodejs pkg-config poppler-utils \
  python3-build python3-jsonschema python3-selenium python3-tinycss2 sqlite3 \
  python3-pytest python3-setuptools python3-venv python3-wheel unzip zsh

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
started=0

# start NAME COMMAND... : once a place is free, in the background, a GoogleTest program, one of pytest's,
# or a script that ends with "N passed, N failed".
start() {
  while [ "$(jobs -rp | wc -l)" -gt "$(nproc)" ]; do wait -n || true; done
  begin "$1"
  started=$((started + 1))
  run "$@" &
}

run() {
  local name=$1 log result=0 begun=$SECONDS
  shift
  log=$(mktemp -p "$results")
  timeout 1200 "$@" >"$log" 2>&1 </dev/null || result=$?
  local good bad
  good=$(sum '^\[  PASSED  \] ([0-9]+) tests?\..*|^([0-9]+) passed[, ].*' "$log")
  bad=$(sum '^\[  FAILED  \] ([0-9]+) tests?, .*|.* passed, ([0-9]+) failed$' "$log")
  # A program that ended badly counts as a failure, whatever it printed; so does one that ran nothing.
  if [ "$result" -ne 0 ] && [ "$bad" -eq 0 ]; then bad=1; fi
  if [ "$good" -eq 0 ] && [ "$bad" -eq 0 ]; then bad=1; fi
  [ "$bad" -eq 0 ] || cat "$log"
  echo "$name: $good passed, $bad failed, $((SECONDS - begun)) s" | tee "$log.result"
}

# sum PATTERN FILE : of the numbers that the pattern's two groups take out of the lines.
sum() { sed -nE "s/$1/\1\2/p" "$2" | awk '{ n += $1 } END { print n + 0 }'; }

# suites BUILD : its GoogleTest programs. One of the tests outside sleeps for ten seconds: in so many
# processes few others come behind it.
suites() {
  start "$1: outside" tests/sharded.sh 8 "build/$1/bin/varmex_outside_tests"
  start "$1: inside" "build/$1/bin/varmex_inside_tests"
  start "$1: injection" tests/sharded.sh 4 "build/$1/bin/varmex_injection_tests"
}

build linux
suites linux
start 'linux: exports' tests/checkExports.sh build/linux/lib/libvarmex.so
start 'linux: hardening' tests/checkHardening.sh build/linux/lib/libvarmex.so build/linux/bin/varmex
start 'linux: command' tests/commandTest.sh build/linux/bin/varmex
start 'linux: completion' tests/completionTest.sh build/linux/bin/varmex
start 'linux: describe' tests/describeTest.py build/linux/bin/varmex
start 'linux: draw' tests/drawTest.sh build/linux/bin/varmex
start 'linux: report' tests/reportTest.py build/linux/bin/varmex
start 'linux: check and library' build/linux/bin/varmex_agreement 1000
start 'linux: install' tests/installTest.sh build/linux

scripts/packages.sh
start 'packages' tests/packageTest.sh build/packages

build linux-asan varmex_tool varmex_outside_tests varmex_inside_tests varmex_injection_tests
suites linux-asan
start 'linux-asan: hostile' tests/hostileTest.sh build/linux-asan/bin/varmex

build linux-tsan varmex_outside_tests
# What threads do at once, and what waits, forks and cancels. Without the threads that are cancelled
# in a system call, whose locks it loses sight of; the descriptors that are closed under the library,
# which it tells of; a thousand threads; and children of threads that fork again.
concurrent='tConcurrency*:*Threads*:tWait.*:tPosixWait.*:tHost.*:tCancellation.*:tResources.*'
concurrent+=':tRegistryMoment.*:tSharingHost.*-tHost.cancelledW*:tHost.closes*:tHost.many*:tHost.aForked*'
TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp die_after_fork=0" \
  start 'linux-tsan: outside' tests/sharded.sh 4 build/linux-tsan/bin/varmex_outside_tests \
  "--gtest_filter=$concurrent"

build windows
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
begin 'setting up Wine'
quietly wineboot -u
quietly wineserver -w
# The longest first: nothing else would run beside it in the end.
start 'windows: describe' tests/inWine.sh tests/describeTest.py tests/onWine.sh \
  build/windows/bin/varmex.exe
start 'windows: command' tests/inWine.sh tests/commandTest.sh tests/onWine.sh build/windows/bin/varmex.exe
start 'windows: outside' tests/sharded.sh 4 tests/inWine.sh wine build/windows/bin/varmex_outside_tests.exe
start 'windows: inside' tests/inWine.sh wine build/windows/bin/varmex_inside_tests.exe
start 'windows: injection' tests/inWine.sh wine build/windows/bin/varmex_injection_tests.exe
start 'python' tests/pythonTest.sh build/linux build/linux-asan
start 'windows: completion' tests/inWine.sh tests/completionTest.sh tests/onWine.sh \
  build/windows/bin/varmex.exe
start 'windows: hostile' tests/inWine.sh tests/hostileTest.sh tests/onWine.sh build/windows/bin/varmex.exe
start 'windows: draw' tests/inWine.sh tests/drawTest.sh tests/onWine.sh build/windows/bin/varmex.exe
start 'windows: check and library' tests/inWine.sh wine build/windows/bin/varmex_agreement.exe 300
start 'windows: exports' tests/checkExports.sh build/windows/bin/varmex.dll
start 'windows: hardening' tests/checkHardening.sh build/windows/bin/varmex.{dll,exe}
start 'windows: install' tests/inWine.sh tests/installTest.sh build/windows
start 'windows: msvc' tests/inWine.sh tests/msvcTest.sh build/windows

wait
# What left no result has failed, too.
cat "$results"/*.result | awk -F': ' -v failed="$started" '
  { split($NF, words, /[ ,]+/); passed += words[1]; failed += words[3] - 1 }
  END { print passed + 0 " passed, " failed " failed"; exit failed > 0 }'
