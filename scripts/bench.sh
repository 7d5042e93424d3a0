#!/usr/bin/env bash
# Runs the benchmarks and prints their ratios beside the goals, in less than eight minutes once
# built. A round runs all cases by turns, in random order, and rounds are repeated until the median of
# each ratio is known well enough, so that another run, and a disturbed machine, comes to the same.
#   bench.sh           all of it
#   bench.sh --plot    draws docs/pictures/costs.svg: costs against the size of the installation
#   bench.sh ARGUMENTS runs the benchmark program alone with these (--benchmark_filter=lookUp)
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" git pkg-config python3 libbenchmark-dev libsimpleini-dev libinih-dev \
  libglib2.0-dev rapidjson-dev libsimdjson-dev

time_for_all=450 # seconds
timed_otherwise=8 # rounds: the Python package and the wake-ups
results=build/bench/results
programs=build/bench/bin

# What today's costs are held against, built from the history.
before=0ac7ea7
build_before() {
  local folder=build/bench/before
  if [ ! -x $folder/bin/varmex ]; then
    git cat-file -e "$before^{commit}" 2>/dev/null || return 0
    rm -rf $folder && mkdir -p $folder/source
    git archive $before | tar -x -C $folder/source
    (cd $folder/source && cmake --preset linux -B .. -DVARMEX_TESTS=OFF >/dev/null)
    cmake --build $folder --target varmex varmex_tool -- --quiet
  fi
  export VARMEX_BENCH_BEFORE=$PWD/$folder
}

# run_round NUMBER FILTER SECONDS: false when it did not end within that time
run_round() {
  if [ "$1" -le $timed_otherwise ]; then
    "$programs/varmex_bench_latency" >"$results/round-$1.txt"
    python3 bench/pythonWalk.py build/bench >>"$results/round-$1.txt"
  fi
  timeout "$3" "$programs/varmex_bench" --benchmark_filter="$2" --benchmark_repetitions=3 \
    --benchmark_min_time=0.005 --benchmark_enable_random_interleaving=true \
    --benchmark_out_format=json --benchmark_out="$results/round-$1.json" >"$results/output.txt" 2>&1
}

cmake --preset linux -B build/bench -DVARMEX_BENCH=ON -DVARMEX_TESTS=OFF >/dev/null
cmake --build build/bench --target \
  varmex_bench varmex_bench_check varmex_bench_latency varmex_bench_memory varmex_bench_python \
  varmex_tool varmex_python -- --quiet
build_before

if [ "${1:-}" = --plot ]; then
  rm -rf $results && mkdir -p $results
  run_round 1 '^growth/' 600
  exec python3 bench/plot.py "$results/round-1.json" docs/pictures/costs.svg
fi
if [ $# -gt 0 ]; then
  exec "$programs/varmex_bench" "$@"
fi

started=$SECONDS
"$programs/varmex_bench_check"
rm -rf $results && mkdir -p $results
"$programs/varmex_bench_memory" >"$results/values.txt"
round=0
last=0 # what the last round took
while [ $((SECONDS - started + last)) -lt $time_for_all ]; do
  filter=$(python3 bench/report.py --unsettled $results)
  [ -n "$filter" ] || break
  round=$((round + 1))
  last=$SECONDS
  if ! run_round $round "$filter" $((time_for_all - SECONDS + started)); then
    echo "Round $round was broken off, and counts for nothing; $results/output.txt tells how far it came."
    rm -f "$results/round-$round".*
    break
  fi
  last=$((SECONDS - last))
done
echo "Rounds: $round, $((SECONDS - started)) s"
python3 bench/report.py $results
