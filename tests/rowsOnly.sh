#!/usr/bin/env bash
# commandTest.sh [RUNNER...] VARMEX : what the command prints, and how it ends.
source "$(dirname "$0")/steps.sh"
varmex=("$@")
# On Windows the registry is no text, which the check could read.
isWindows=$([[ ${varmex[-1]} != *.exe ]] || echo yes)
export VARMEX_FSROOT

# expect STATUS PATTERN ARGUMENT... : how the command ends.
expect() { ends "$1" "$2" "${varmex[@]}" "${@:3}"; }
# finds PATTERN FILE SED-SCRIPT : what the check says of a sample with this change in a file.
finds() { checked 1 "$1" check "${@:2}"; }
passes() { checked 0 '^No findings\.$' check "$@"; }
# checked STATUS PATTERN WORDS FILE SED-SCRIPT
checked() {
  VARMEX_FSROOT=$(mktemp -d)
  cp -r "$here"/samples/* "$VARMEX_FSROOT"
  sed -i "$5" "$VARMEX_FSROOT/etc/pxi/$4"
  # shellcheck disable=SC2086
  expect "$1" "$2" $3
  rm -r "$VARMEX_FSROOT"
}
# What must be there and is missing is told like what can't be read.
checked 1 'slot 2/1, TriggerBusNumber .*Section \[Chassis2TriggerBus1\] has no SlotList' show pxiesys.ini '/^\[Chassis2TriggerBus1/,/^\[Chassis2S/{/^SlotList/d}'
checked 1 '^  1 +bus !1  bus 2 ' show pxisys.ini '/^\[Chassis1TriggerBridge1\]/,/^\[Chassis1T.*2/{/^Source/d}'
checked 1 '^  2 +!1 unknown ' show pxiesys.ini '/^\[Chassis1Slot2\]/,/^\[Chassis1Slot3/{/^SlotType/d}'
VARMEX_FSROOT=$here/samples
expect 0 '^No findings\.$' check
expect 0 '^\[\]$' check --json
finds '^pxiesys.ini:17: wrong: missing-section: \[Chassis1\] SlotList$' pxiesys.ini '17s/18"/18,19"/'
finds 'answers: slot 1/19 fails: Chassis 1 has no slot 19: .*\(varmex_errorUnknownItem -380751\)$' pxiesys.ini '17s/18"/18,19"/'
finds '^1 finding\.$' pxiesys.ini '9s/ORX/X/'
finds 'disagree on Model in section \[Chassis1\]\. \(varmex' pxiesys.ini '9s/ORX/X/'
finds 'duplicate-address: .Chassis1Slot3. AddressInfo' pxiesys.ini 's/PXI0::7-0/PXI0::5-0/g'
finds 'unknown-slot-type: .Chassis1Slot10. SlotType' pxiesys.ini '218s/Timing/Time/'
finds 'slot-without-bus: .Chassis1Slot11.$' pxiesys.ini 's/"7,8,9,10,11,12"/"7,8,9,10,12"/'
finds '^1 finding\.$' pxiesys.ini 's/"7,8,9,10,11,12"/"7,,9,10,11,12"/'
finds 'slot-on-two-buses: .Chassis1TriggerBus2. SlotList' pxiesys.ini 's/"7,8,9,/"6,7,8,9,/'
finds 'bridge-to-missing-bus: .Chassis1TriggerBridge1. DestinationTriggerBus' pxisys.ini '27s/=.*/= 9/'
finds 'line-map-out-of-range: .Chassis1LineMappingSpec1. PXI_TRIG3' pxisys.ini '49s/=.*/= "9"/'
finds '^pxisys.ini:50: doubtful: line-passed-over: .Chassis1LineMappingSpec1.$' pxisys.ini '50s/=//'
finds '^  68 \| PCIBusNumber = ü$' pxisys.ini '68s/=.*/= ü/'
finds '^     \| ~~~~~~~~~~~~   \^~~~~$' pxisys.ini '68s/=.*/= 漢字x/'
finds '^     \| ~~~~~~~~~~~~            \^$' pxisys.ini '68s/.*/PCIBusNumber\t=\tü/'
finds '^  68 \| PCIBusNumber = \\xFC\\x1B$' pxisys.ini '68s/=.*/= \xfc\x1b/'
finds '^     \| ~~~~~~~~~~~~   \^~~~~~~~$' pxisys.ini '68s/=.*/= \xfc\x1b/'
COLUMNS=40 finds '^  68 \| PCIBusNumber = 漢漢漢漢漢漢漢\.\.\.$' pxisys.ini '68s/=.*/= 漢漢漢漢漢漢漢漢漢漢漢漢漢/'
finds '^     \|  \^~~~~~~~~~~~~~~~~~~~~~~~$' pxisys.ini '50s/=//'
finds '^pxisys.ini:14: wrong: missing-item: .Chassis1. SlotList$' pxisys.ini '14s/=.*/=/'
finds 'line gives it no value' pxisys.ini '14s/=.*/=/'
finds '^pxiesys.ini:51: doubtful: spelled-twice' pxiesys.ini '50s/$/\nSystemTimingSet1 = 7/'
finds '^pxisys.ini:1: wrong: wrong-encoding$' pxisys.ini '1s/^/\xff\xfe/'
finds '^pxisys.ini:1: doubtful: wrong-encoding$' pxisys.ini 's/./&\x00/g'
# In UTF-16 a file is checked as it will be in UTF-8.
wide='s/./&\x00/g;2,$s/^/\x00/'
finds '^  68 \| PCIBusNumber = ü$' pxisys.ini "68s/=.*/= z/;$wide;68s/z/\xfc/;1s/^/\xff\xfe/"
# One finding each, whatever else is lost with it: a list that can't be read may name any section.
for edit in "$wide" "$wide;1s/^/\xff\xfe/" 's/./\x00&/g;s/$/\x00/;1s/^/\xfe\xff/' '5s/=.*/= x/' '$a [Chassis1Slot30Function0]' \
  '$a [Chassis9Slot1]' '152s/$/\nTriggerBridgeList = x/;$a [Chassis3TriggerBridge1]\n[Chassis3LineMappingSpec1]'; do finds '^1 finding\.$' pxisys.ini "$edit"; done
for list in SlotList TriggerBusList StarTriggerList FunctionList DeviceList; do finds '^1 finding\.$' pxisys.ini "152,/^$list/s/^$list.*/$list = x/"; done
# What keeps the whole description from being read is told with file and line.
checked 1 'PCIBusNumber in section \[Chassis1Slot5\] is no number: "z" in .*pxisys\.ini, line 68\. \(varmex' show pxisys.ini '68s/=.*/= z/'
checked 1 'DeviceList in section .* is no list of numbers: "x" in .*pxisys\.ini, line 212\. \(' list pxisys.ini '152,/^DeviceList/s/^DeviceList.*/DeviceList = x/'
checked 1 'pxisys\.ini is in UTF-16, which the library does not read\. \(varmex.* -380757\)$' list pxisys.ini '1s/^/\xff\xfe/'
if [ -z "$isWindows" ]; then
  finds '^registry.reg:1: wrong: registry-not-read$' registry.reg 1d
  finds 'an export of version 4$' registry.reg '1s/.*/REGEDIT4/'
  finds 'in UTF-16 without its mark$' registry.reg 's/./&\x00/g'
  finds 'in UTF-16 without its mark$' registry.reg 's/./\x00&/g'
  finds 'high byte first$' registry.reg '1s/^/\xfe\xff/'
  utf16="$wide;1s/^/\xff\xfe/"
  for edit in '1s/^/\xef\xbb\xbf/' "$utf16" '$a ; \xfc'; do passes registry.reg "$edit"; done
  finds '^1 finding\.$' pxisys.ini '10s/=.*/= "T\xfc"/'
  # A name in the bytes of a code page, by the encoding of the registry.
  for edit in p "$utf16" '$a ; \xfc'; do
    VARMEX_FSROOT=$(mktemp -d)
    cp -r "$here"/samples/* "$VARMEX_FSROOT"
    sed -i 's/^TriggerManager = "Tessmere"/TriggerManager = "T\xfc"/' "$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
    sed -i "$edit" "$VARMEX_FSROOT/etc/pxi/registry.reg"
    case $edit in
      '$a'*) expect 0 '^No findings\.$' check ;;
      *) expect 1 '^pxiesys.ini:.* wrong: code-page-identifier: .Chassis2. TriggerManager$' check ;;
    esac
    rm -r "$VARMEX_FSROOT"
  done
fi
finds 'unreferenced-section: .Orphan.$' pxisys.ini '$a [Orphan]'
finds 'repeated-section: .Chassis1.$' pxisys.ini '$a [Chassis1]'
finds '^pxisys.ini:.* repeated-item: .System. ChassisList' pxisys.ini '5s/$/\nChassisList = 1/'
finds 'missing-item: .Chassis1. SlotList' pxisys.ini '0,/^SlotList/{/^SlotList/d}'
finds 'bad-number: .Chassis1Slot5. PCIBusNumber' pxisys.ini '68s/=.*/= z/'
finds 'doubtful: missing-item: .Chassis1Slot5. PCIBusNumber$' pxisys.ini 68d
finds 'slot-covered-twice: .Chassis1Slot3. Perip' pxiesys.ini '150s/$/\nAddressInfo = PXI0::99-0.0::INSTR/'
# Addresses and lists: what the library takes as it is, and where it stops.
for edit in '68s/=.*/= None/' '69s/=.*/= None/' 's/^\[System\]/[PXI System]/' '176s/=.*/= 81/;177s/=.*/= 15/'; do passes pxisys.ini "$edit"; done
for edit in 's/PXI0::5-0.1/PXI0::255-0.7/' 's/PXI0::5-0.0::INSTR;/&;/' 's/OccupiedSlotList = "4"/OccupiedSlotList = "3,4"/' '50s/$/\nSystemTimingSet1 = 3/' \
  's/^.Chassis1StarSystemTimingSets1/[Chassis1StarSystemTimingSet1/'; do passes pxiesys.ini "$edit"; done
finds 'no PCI address has these numbers: 256\.0\.7' pxiesys.ini 's/PXI0::5-0.1/PXI0::256-0.7/'
finds 'no PCI address has these numbers: 5\.32\.0' pxiesys.ini 's/PXI0::5-0.1/PXI0::5-32.0/'
finds 'no PCI address has these numbers: 5\.0\.-1' pxiesys.ini 's/PXI0::5-0.1/PXI0::5-0.-1/'
finds 'no PCI address has these numbers: -1\.15\.0' pxisys.ini '68s/=.*/= -1/'
finds 'no PCI address has these numbers: 33\.-1\.0' pxisys.ini '69s/=.*/= -1/'
finds 'no PCI address has these numbers: 5\.0\.8' pxiesys.ini 's/;PXI0::5-0.1/+PXI0::5-0.8/'
finds 'no address of a device: "PXI0::5-0::INSTR"' pxiesys.ini 's/PXI0::5-0.1/PXI0::5-0/'
finds 'no address of a device: "PXI0::5-0.1"' pxiesys.ini 's/\(PXI0::5-0.1\)::INSTR/\1/'
finds 'bad-list: .PXI System. ChassisList' pxisys.ini 's/^\[System\]/[PXI System]/;5s/=.*/= x/'
finds 'missing-section: .System. ChassisList' pxisys.ini '5s/=.*/= "1,3,9"/'
finds 'missing-item: .Chassis9. ' pxisys.ini '$a [Chassis9]'
finds 'answers: chassis 9, slots fails' pxisys.ini '$a [Chassis9]\nSlotList = x'
# What hides a way, a star or terminals is told as such.
checked 1 '^To +1/17: trigger bus can.t be read$' 'triggers DMM SUPPLY' pxiesys.ini '23s/=.*/= "7,,9"/'
checked 1 'slot 3/3, StarTriggerNumber and [0-9]+ more: PXI_STAR0 in .* is no number' 'triggers 3/3 3/4' pxisys.ini '166s/=.*/= three/'
checked 1 'terminals PXI_Trig: SlotList in .* -380757' 'terminals 13.0.0' pxiesys.ini '23s/=.*/= "7,,9"/'
checked 1 'terminals PXI_Star: PXI_STAR0 in' 'terminals 81.14.0' pxisys.ini '166s/=.*/= three/'
# What the library's words do not place is told with file and line.
bus='/^.Chassis3Slot2]/,/^Local/s/^PCISlotPathRootBus.*'
for words in 'show 3' show 'list'; do
  checked 1 'slot 2 is no decimal number, .* alone: "0x50" in .*pxisys\.ini, line 181\. .* -380765\)$' "$words" pxisys.ini "$bus/PCISlotPathRootBus = 0x50/"
done
checked 1 'no valid slot path, .* known: "300" in .*pxisys\.ini, line 181\. ' 'show 3' pxisys.ini "$bus/PCISlotPathRootBus = 300/"
checked 1 'no valid slot path, .* known: "9" in .*pxisys\.ini, line 180\. ' 'show 3' pxisys.ini '180s/=.*/= 9/'
checked 1 '^!2  slot 1/10, SlotType: "Odd" is no type of slot: .*pxiesys\.ini, line 218\. ' show pxiesys.ini '202s/=.*/= Odd/;218s/=.*/= Odd/'
checked 1 'PXI_TRIG3 .* line -1, .* to 7: "0,-1" in .*pxisys\.ini, line 49\. ' show pxisys.ini '49s/=.*/= "0,-1"/'
checked 1 'and 1 more: .* destination line 8, .* to 7: "8" in .*pxisys\.ini, line 59\. ' show pxisys.ini '59s/=.*/= 8/;49s/=.*/= 9/'
checked 1 'StarTriggerNumber and [0-9]+ more: Section .* has no PXI_STAR7: "" in .*pxiesys\.ini, line 37\. ' show pxiesys.ini '37s/=.*/= ""/'
checked 1 'DStarTriggerNumber and [0-9]+ more: Section .* has no StarSystemTimingSet7: "" in .*, line 56\. ' show pxiesys.ini '56s/=.*/= ""/'
checked 1 'has no FunctionList: neither file has such a section\. ' show pxisys.ini '/^.Chassis3Slot4Function0Device8\]/d'
checked 1 '^1 fault hides 2 answers\. ' show pxisys.ini '49s/=.*/= 8/'
checked 1 'bridge 1, line 3 and 1 more: .*pxisys\.ini, line 49\. ' 'triggers 1/2 1/9' pxisys.ini '49s/=.*/= 8/'
checked 0 '^From +1/9 on no trigger bus$' 'triggers DMM TIMING' pxiesys.ini '23s/=.*/= "7"/'
checked 0 '^PXI_Star ' 'terminals 13.0.0' pxiesys.ini '23s/=.*/= "7"/'
# What is doubtful alone, which no answer of the library shows, and what is right beside it.
finds 'bridge-onto-itself: .Chassis1TriggerBridge1.$' pxisys.ini '27s/=.*/= 1/'
finds 'files-disagree: .Chassis1TriggerBridge1. LineMappingSpec$' pxisys.ini '28s/=.*/= 2/'
finds 'no trigger line: 8$' pxisys.ini '49s/=.*/= "8"/'
finds 'doubtful: bad-number: .Chassis1Slot1. PeripheralSlotLinkWidth1$' pxiesys.ini 's/^.Chassis1Slot1.$/&\nPeripheralSlotLinkWidth1 = x/'
finds 'doubtful: bad-number: .Chassis3Slot1. PCISlotPathRootBus$' pxisys.ini 's/^.Chassis3Slot1.$/&\nPCISlotPathRootBus = x/'
finds 'missing-slot: .Chassis1Slot3. PeripheralModuleOccupiedSlotList$' pxiesys.ini 's/OccupiedSlotList = "4"/OccupiedSlotList = "44"/'
finds 'slot-on-two-lines: .Chassis1StarTrigger1. SystemTimingSlot$' pxiesys.ini '29s/=.*/= 2/'
finds '^1 finding\.$' pxiesys.ini "$wide"
finish
