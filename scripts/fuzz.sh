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

for target in "${targets[@]}"; do
  work=build/linux-fuzz/corpus/$target
  mkdir -p "$work"
  cp -n fuzz/corpus/"$target"/* "$work"
  log=build/linux-fuzz/$target.log
  begin "fuzzing $target for $seconds s"
  if build/linux-fuzz/bin/fuzz_"$target" -max_total_time="$seconds" -timeout=10 -max_len=20000 \
    -artifact_prefix="build/linux-fuzz/$target-" "$work" >"$log" 2>&1; then
    echo "fuzz $target: $(grep -oE 'Done [0-9]+ runs in [0-9]+ second' "$log")s"
  else
    tail -n 60 "$log"
    echo "fuzz $target: FAILED"
    exit 1
  fi
done
