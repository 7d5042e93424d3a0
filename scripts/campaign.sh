#!/usr/bin/env bash
# campaign.sh SECONDS [SEED] : random forks, cancels, links, writers and waiters over one
# installation for that long, under ASan and UBSan and then under TSan.
source "$(dirname "$0")/common.sh"
seconds=${1:?usage: campaign.sh SECONDS [SEED]}
shift
install "${build_tools[@]}"
export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp die_after_fork=0"
for preset in linux-asan linux-tsan; do
  build "$preset" varmex_campaign
  log=build/$preset/campaign.log
  if build/"$preset"/bin/varmex_campaign "$seconds" "$@" >"$log" 2>&1; then
    echo "campaign $preset: $(tail -n 1 "$log")"
  else
    tail -n 100 "$log"
    echo "campaign $preset: FAILED"
    exit 1
  fi
done
