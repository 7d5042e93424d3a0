#!/usr/bin/env bash
# sharded.sh COUNT COMMAND... : a GoogleTest program in that many processes at once.
set -uo pipefail
export GTEST_TOTAL_SHARDS=$1 GTEST_SHARD_INDEX
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
processes=()
for ((GTEST_SHARD_INDEX = 0; GTEST_SHARD_INDEX < GTEST_TOTAL_SHARDS; ++GTEST_SHARD_INDEX)); do
  "$@" >"$folder/$GTEST_SHARD_INDEX" 2>&1 &
  processes+=($!)
done
result=0
for process in "${processes[@]}"; do wait "$process" || result=1; done
cat "$folder"/*
exit "$result"
