#!/usr/bin/env bash
# coverage.sh : what the native suites leave untested of the library, in build/coverage: lines that
# never run, and the share of branches that are taken, those of exceptions aside.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" python3
build_in build/coverage linux -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_C_FLAGS=--coverage '-DCMAKE_CXX_FLAGS=-O0 --coverage -fprofile-update=atomic' \
  varmex_outside_tests varmex_inside_tests varmex_injection_tests
find build/coverage -name '*.gcda' -delete
for suite in outside inside injection; do
  begin "running $suite"
  quietly tests/sharded.sh 4 "build/coverage/bin/varmex_${suite}_tests" || true
done
begin 'counting'
find build/coverage/includes build/coverage/source -name '*.gcda' -print0 |
  xargs -0 gcov --branch-probabilities --json-format --stdout 2>/dev/null |
  python3 scripts/coverage.py
