#!/usr/bin/env bash
# drawTest.sh [RUNNER...] VARMEX : the pictures of the command, as XML.
source "$(dirname "$0")/steps.sh"
varmex=("$@")
export VARMEX_FSROOT SOURCE_DATE_EPOCH=1000000000
picture=$work/picture.xml

# drawn STATUS PATTERN ARGUMENT... : how draw ends.
drawn() { ends "$1" "$2" "${varmex[@]}" draw "${@:3}"; }

# draws STATUS ARGUMENT... : leaves the picture without its namespace, for short paths.
draws() {
  ends "$1" '' "${varmex[@]}" draw "${@:2}" -o "$work/picture.svg"
  try "well-formedness of draw ${*:2}" xmllint --noout "$work/picture.svg"
  sed 's/ xmlns="[^"]*"//' "$work/picture.svg" >"$picture"
}

# holds WANTED XPATH
holds() { is "$1" "$(xmllint --xpath "$2" "$picture" 2>&1)" "$2"; }

# Where a slot begins, from the left.
slot() {
  echo "number(substring-before(substring-after(//g[@class='column'][starts-with(title,'Slot $1,')]/@transform,'('),' '))"
}

VARMEX_FSROOT=$here/samples
draws 0
holds '3 34' 'concat(count(//g[@class="chassis"]), " ", count(//g[@class="column"]))'
holds 2 'count(//rect[@class="slot kind5"][starts-with(../title, "Slot 2, PXIe peripheral slot, trigger bus 1, ")])'
holds 2 'count(//text[.="Chassis 3: Havrel Modular HM-1008" or .="serial number 0A41F27C"])'

draws 0 1
module="//g[@class='module'][text='TL-950 RF Generator']"  # below its alias
holds GENERATOR "string($module/text[1])"
holds true "$module/rect/@width > 2 * ($(slot 13) - $(slot 12)) and $module/rect/@width < 3 * ($(slot 13) - $(slot 12))"
bar="//g[@class='bus'][title='Trigger bus 2']/rect"  # from slot 7 to slot 12 and no further
holds true "number($bar/@x) >= $(slot 7) and number($bar/@x) < $(slot 8)"
holds true "$bar/@x + $bar/@width > $(slot 12) and $bar/@x + $bar/@width <= $(slot 13)"
# The head of bridge 3 is under its destination.
holds 4 'count(//g[@class="bridge"])'
head="number(substring-before(substring-after(//g[@class='bridge'][starts-with(title,'Bridge 3 ')]/path[@class='head']/@d,'M'),' '))"
holds true "$head > $(slot 13) and $head < $(slot 14)"
star='//g[@class="trigger"][title="Star 1"]'
holds 16 "count($star/g[@class='line']/circle)"
holds true "$star/g/rect[@class='controller']/@x > $(slot 10) and $star/g/rect[@class='controller']/@x < $(slot 11)"
is "$(cat "$work/picture.svg")" "$("${varmex[@]}" draw 1 -o -)" 'draw to the standard output'

drawn 2 '--output' 1
drawn 1 "can't write $work/none/x.svg" -o "$work/none/x.svg"
ln -s /dev/full "$work/full.svg"
drawn 1 "can't write $work/full.svg" -o "$work/full.svg"
drawn 2 'does not end with any of these' -o "$work/x.gif"
holds 1 'count(//rect[@class="reduced"][../title[contains(., "DIO-LEFT")]])'
holds 1 'count(//text[.="Bridge 3 from bus 2 to bus 3: lines 0-5 each to the same, 6 to 6-7"])'
holds true 'contains(//g[@class="foot"]/text, ", 2001-09-09 01:46:40 UTC")'

if [ $# -gt 1 ]; then
  drawn 1 'on Windows pictures are written as .svg alone' -o "$work/none.png"
else
  holds true "starts-with(//g[@class='foot']/text, '$(uname -n)')"
  # By rsvg-convert: a picture, a page for each chassis, and what to do without it.
  for file in all.png all.pdf; do drawn 0 '' -o "$work/$file"; done
  is 89504e470d0a1a0a "$(head -c 8 "$work/all.png" | od -An -tx1 | tr -d ' \n')" 'a PNG'
  for page in 1 2 3; do
    is "Chassis $page:" "$(pdftotext -f $page -l $page "$work/all.pdf" - | grep -o '^Chassis [0-9]:')" "page $page"
  done
  ends 1 librsvg2-bin env "PATH=$work" "$1" draw -o "$work/none.png"
  drawn 1 "can't write $work/none/x.pdf" -o "$work/none/x.pdf"
  printf '#!/bin/sh\nfor word; do case $word in --output=*) echo half >"${word#*=}" ;; esac; done; exit 1\n' \
    >"$work/rsvg-convert"
  chmod +x "$work/rsvg-convert"
  ends 1 "can't write $work/all.png" env "PATH=$work" "$1" draw -o "$work/all.png"
  is "PNG $work/all.png" "$(head -c 4 "$work/all.png" | tail -c 3) $(echo "$work"/all.png*)" 'the picture from before'
fi

newRoot
long=$(printf '%5000s' | tr ' ' W)
gone=$(printf '<script>"&\x27]]>\xff\xc0\xaf\xed\xa0\x80\xef\xbf\xbf\x1b\xc2\x85')
many=$(seq -s , 1000 1099)
{
  printf '[System]\nChassisList = 1,2,3\n'
  printf '[Chassis%s]\nVendor = %s\nModel = M\nSerialNumber = %s\nSlotList = "%s"\n' \
    2 V S '' 3 V S "$many" 1 "$gone" "$long" 1,2,3,7,2147483647
  # Modules that claim each other's slots, and a slot whose module is far away; bus 2 is inside bus 1.
  printf 'TriggerBusList = "1,2"\nTriggerBridgeList = "1,2,3"\n'
  printf '[Chassis1TriggerBus%s]\nSlotList = "%s"\n' 1 1,2,3,2147483647 2 7
  printf '[Chassis1Slot%s]\nSlotType = %s\n' 3 "$long" 7 "$long" 2147483647 "$long"
  for number in 1 2; do
    printf '[Chassis1Slot%s]\nSlotType = %s\nAddressInfo = PXI0::%s-0.0::INSTR\nModel = %s\n' $number "$long" $number "$gone$long"
    echo 'PeripheralModuleOccupiedSlotList = "1,2,7"'
  done
  printf '[Chassis3Slot%s]\nSlotType = PXIeHybridSlot\nLocalBusLeft = none\n' ${many//,/ }
} >"$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
{
  printf '[System]\nChassisList = ""\n[Chassis1LineMappingSpec1]\nPXI_TRIG0 = 9\n'
  printf '[Chassis1TriggerBridge%s]\nLineMappingSpec = 1\nSourceTriggerBus = %s\nDestinationTriggerBus = %s\n' 1 1 9 2 1 2 3 1 1
} >"$VARMEX_FSROOT/etc/pxi/pxisys.ini"
draws 1
is 0 "$(grep -c '<script' "$picture")" 'markup of a description in the picture'
is yes "$([ "$(wc -c <"$picture")" -lt 100000 ] && echo yes)" 'bounded size'
holds 1 'count(//text[starts-with(., "Chassis 1: <script>") and contains(., "&") and contains(., "]]>")])'
holds '5 2' 'concat(count(//g[@class="chassis"][1]/g[@class="column"]), " ", count(//g[@class="jump"]))'
holds '1 bus 9' 'concat(count(//g[@class="bridge"]), " ", //g[@class="bridge"]/text[1])'
holds 'module of slot 1' 'string(//g[@class="module"][3]/text)'
holds '3 1 1' 'concat(count(//text[starts-with(., "Bridge ")]), " ", count(//text[.="No slots"]), " ",
  count(//text[.="And 28 more slots, to 1099"]))'

# A line beyond the eight of a bus; an end of a bridge, and the type of a late slot, whose mark is told first.
sed -i 's/PXI_TRIG0 = 9/PXI_TRIG0 = 8/; s/= 9$/= nine/' "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
sed -i '/Slot1009/,/SlotType/ s/^SlotType.*/SlotType = None/' "$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
drawn 1 '^!. +bridge 1 of chassis 1, .*names the destination line 8' -o -
draws 1
holds 'true 1' 'concat(starts-with(//g[@class="bridge"]/text[1], "!"), " ", count(//text[contains(., "slot 3/1009, SlotType")]))'

finish
