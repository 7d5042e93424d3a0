#!/usr/bin/env bash
# Builds varmex and shows the sample installation with it.
source "$(dirname "$0")/common.sh"
install "${build_tools[@]}"
build linux varmex_tool
VARMEX_FSROOT=$PWD/samples build/linux/bin/varmex show "$@"
