#!/usr/bin/env bash
# Runs the benchmarks and prints their ratios. With arguments it runs the benchmark program alone,
# which they are passed to (`bench.sh --benchmark_filter=lookUp`), and prints times.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}" pkg-config python3 libbenchmark-dev libsimpleini-dev libinih-dev \
  libglib2.0-dev rapidjson-dev libsimdjson-dev

build_in build/bench linux -DVARMEX_BENCH=ON -DVARMEX_TESTS=OFF \
  varmex_bench varmex_bench_check varmex_bench_latency varmex_bench_memory
programs=build/bench/bin

if [ $# -gt 0 ]; then
  exec "$programs/varmex_bench" "$@"
fi

begin 'checking that all readers find the same'
"$programs/varmex_bench_check"
begin 'timing'
"$programs/varmex_bench" --benchmark_repetitions=9 --benchmark_min_time=0.05 \
  --benchmark_enable_random_interleaving=true --benchmark_out_format=json \
  --benchmark_out=build/bench/results.json >build/bench/results.txt 2>&1
begin 'measuring memory'
"$programs/varmex_bench_memory"
python3 bench/report.py build/bench/results.json
begin 'measuring wake-ups'
"$programs/varmex_bench_latency"
