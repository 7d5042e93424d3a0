#!/usr/bin/env bash
# fuzz.sh SECONDS [TARGET...] : runs each fuzz target for that long. What a run finds stays in the
# build folder; the seeds in fuzz/corpus are not changed.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" clang-14 libclang-rt-14-dev
seconds=${1:?usage: fuzz.sh SECONDS [TARGET...]}
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(ini json registry tree model routing saved)
build linux-fuzz "${targets[@]/#/fuzz_}"

# fuzz TARGET
fuzz() {
  local work=build/linux-fuzz/corpus/$1 log=build/linux-fuzz/$1.log
  mkdir -p "$work"
  cp -n fuzz/corpus/"$1"/* "$work"
  if build/linux-fuzz/bin/fuzz_"$1" -max_total_time="$seconds" -timeout=10 -max_len=20000 \
    -artifact_prefix="build/linux-fuzz/$1-" "$work" >"$log" 2>&1; then
    echo "fuzz $1: $(grep -oE 'Done [0-9]+ runs in [0-9]+ second' "$log")s"
  else
    tail -n 60 "$log"
    echo "fuzz $1: FAILED"
    return 1
  fi
}

begin "fuzzing ${targets[*]} for $seconds s each"
export seconds
export -f fuzz
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'fuzz {}'
