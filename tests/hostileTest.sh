#!/usr/bin/env bash
# hostileTest.sh [RUNNER...] VARMEX : whatever stands in the description files, the command ends in its own way.
# A sanitizer's finding counts as a crash. Of the Windows command, which starts slowly, a part of it.
source "$(dirname "$0")/steps.sh"
varmex=("$@")
count=12 places=(pxisys pxiesys both)
[[ ${varmex[-1]} != *.exe ]] || count=3 places=(both)
export VARMEX_FSROOT ASAN_OPTIONS=exitcode=99 UBSAN_OPTIONS=exitcode=99
newRoot
machine=$work/machine made=$work/made
"${varmex[@]}" make "$machine" express:18x2 --pci
"${varmex[@]}" make "$made" express:18:9 classic:8

# runs ARGUMENT... : with the input that it is about, to an end of the command's own.
runs() { try "varmex $* with $input" endsItself "$@"; }

endsItself() {
  local result=0
  timeout 60 "${varmex[@]}" "$@" >"$work/output" 2>&1 || result=$?
  cat "$work/output"
  [ "$result" -le 2 ] && { [ "$result" -eq 0 ] || [ -s "$work/output" ]; }
}

# The sample up to where bytes are torn out or doubled.
source=$here/samples/etc/pxi/pxiesys.ini size=$(stat -c %s "$here/samples/etc/pxi/pxiesys.ini")
for ((number = 1; number <= count; ++number)); do
  { head -c $((number * 997 % size)) "$source" && printf '\x00\xff]=[,"' &&
    tail -c +$((number * 613 % size)) "$source"; } >"$work/torn$number"
done
for input in "$here"/fuzz/corpus/{ini,model,json,registry}/* "$work"/torn*; do
  for place in "${places[@]}"; do
    rm -f "$VARMEX_FSROOT"/etc/pxi/*.ini
    for file in pxisys pxiesys; do
      [ "$place" = "$file" ] || [ "$place" = both ] || continue
      tr '\001' '\n' <"$input" >"$VARMEX_FSROOT/etc/pxi/$file.ini"
    done
    for words in check 'check --json' 'find 1' 'triggers 1/2 1/17 --all' 'watch --timeout 0.01' \
      'explain 1' 'explain 1/2' 'explain 5.0.0 --json' "save $work/saved.json" \
      "draw -o $work/picture.svg" "report -o $work/page.html" \
      "list --csv --from $VARMEX_FSROOT --from $work/saved.json" "diff $work/saved.json $made"; do
      # shellcheck disable=SC2086
      runs $words
    done
  done
done
# Saved files that are torn, and PCI trees that lead back to themselves.
source=$here/fuzz/corpus/saved/sample size=$(stat -c %s "$here/fuzz/corpus/saved/sample")
for ((input = 1; input <= 5 * count; ++input)); do
  { head -c $((input * 97 % size)) "$source" && tail -c +$((input * 97 % size + input % 3 * 2)) "$source"; } \
    >"$work/torn.json"
  runs check --live --from "$work/torn.json"
done
for input in 0 5 253 254 255 256 -1 x; do
  for bus in "$machine"/sys/bus/pci/devices/*/secondary_bus_number; do echo "$input" >"$bus"; done
  VARMEX_FSROOT=$machine runs check --live
done
finish
