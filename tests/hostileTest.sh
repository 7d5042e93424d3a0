#!/usr/bin/env bash
# hostileTest.sh [RUNNER...] VARMEX : whatever stands in the description files, the command ends in its own way.
# A sanitizer's finding counts as a crash. Of the Windows command, which starts slowly, a part of it.
set -uo pipefail
varmex=("$@")
count=12 places=(pxisys pxiesys both)
[[ ${varmex[-1]} != *.exe ]] || count=3 places=(both)
here=$(cd "$(dirname "$0")" && pwd)
export VARMEX_FSROOT ASAN_OPTIONS=exitcode=99 UBSAN_OPTIONS=exitcode=99
VARMEX_FSROOT=$(mktemp -d)
mkdir -p "$VARMEX_FSROOT/etc/pxi" "$VARMEX_FSROOT/var/lib/PXISA"
passed=0
failed=0

try() {
  local result=0
  timeout 60 "${varmex[@]}" "$@" >"$VARMEX_FSROOT/output" 2>&1 || result=$?
  if [ "$result" -le 2 ] && { [ "$result" -eq 0 ] || [ -s "$VARMEX_FSROOT/output" ]; }; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "varmex $* with $input: status $result"
    tail -n 20 "$VARMEX_FSROOT/output"
  fi
}

# A part of the sample up to where a byte is torn out or doubled, by number.
torn() {
  local source=$here/../samples/etc/pxi/pxiesys.ini size
  size=$(stat -c %s "$source")
  head -c $(($1 * 997 % size)) "$source"
  printf '\x00\xff]=[,"'
  tail -c +$(($1 * 613 % size)) "$source"
}

for input in "$here"/../fuzz/corpus/{ini,model,json,registry}/* $(seq "$count"); do
  for place in "${places[@]}"; do
    rm -f "$VARMEX_FSROOT"/etc/pxi/*.ini
    for file in pxisys pxiesys; do
      [ "$place" = "$file" ] || [ "$place" = both ] || continue
      if [ -f "$input" ]; then
        tr '\001' '\n' <"$input" >"$VARMEX_FSROOT/etc/pxi/$file.ini"
      else
        torn "$input" >"$VARMEX_FSROOT/etc/pxi/$file.ini"
      fi
    done
    try check
    try check --json
    try find 1
    try list --csv
    try triggers 1/2 1/17 --all
    try explain 1
    try explain 1/2
    try explain 5.0.0 --json
    try draw -o "$VARMEX_FSROOT/picture.svg"
    try report -o "$VARMEX_FSROOT/page.html"
    try save "$VARMEX_FSROOT/saved.json"
    try diff "$VARMEX_FSROOT/saved.json" "$here/../samples"
  done
done
# Saved files that are torn, and PCI trees that lead back to themselves.
for ((input = 1; input <= 5 * count; ++input)); do
  source=$here/../fuzz/corpus/saved/sample size=$(stat -c %s "$here/../fuzz/corpus/saved/sample")
  { head -c $((input * 97 % size)) "$source" && tail -c +$((input * 97 % size + input % 3 * 2)) "$source"; } \
    >"$VARMEX_FSROOT/torn.json"
  try check --live --from "$VARMEX_FSROOT/torn.json"
done
rm -r "$VARMEX_FSROOT"
VARMEX_FSROOT=$(mktemp -d)
"${varmex[@]}" make "$VARMEX_FSROOT" express:18x2 --pci
for input in 0 5 253 254 255 256 -1 x; do
  for bridge in "$VARMEX_FSROOT"/sys/bus/pci/devices/*; do
    [ ! -e "$bridge/secondary_bus_number" ] || echo "$input" >"$bridge/secondary_bus_number"
  done
  try check --live
done
rm -r "$VARMEX_FSROOT"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
