#!/usr/bin/env bash
# coverage.sh : what the native suites leave untested of the library, in build/coverage: lines that
# never run, and the two ways of each condition. Exceptions are no branches to this compiler.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" clang-14 libclang-rt-14-dev llvm-14 python3
# The counters lie in files that are mapped, so that those of a child that ends at once count, too.
flags='-O0 -fprofile-instr-generate -fcoverage-mapping -mllvm -runtime-counter-relocation -Wno-unused-command-line-argument'
programs=(build/coverage/bin/varmex_{outside,inside,injection}_tests)
build_in build/coverage linux-clang -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_FLAGS="$flags" \
  -DCMAKE_CXX_FLAGS="$flags" "${programs[@]##*/}"
rm -rf build/coverage/profile
export LLVM_PROFILE_FILE=$PWD/build/coverage/profile/%c%p-%m.profraw
for program in "${programs[@]}"; do
  begin "running ${program##*/}"
  quietly tests/sharded.sh 4 "$program" || true
done
begin 'counting'
find build/coverage/profile -name '*.profraw' >build/coverage/profiles
llvm-profdata-14 merge --failure-mode=all -f build/coverage/profiles -o build/coverage/profile.data
llvm-cov-14 export -instr-profile build/coverage/profile.data build/coverage/lib/libvarmex.so \
  "${programs[@]/#/-object=}" --ignore-filename-regex='/(tests|usr|build)/' | python3 scripts/coverage.py
