#!/usr/bin/env bash
# commandTest.sh [RUNNER...] VARMEX : what the command prints, and how it ends.
# shellcheck disable=SC2086
source "$(dirname "$0")/steps.sh"
varmex=("$@")
# On Windows the registry is no text, which the check could read.
isWindows=$([[ ${varmex[-1]} != *.exe ]] || echo yes)
export VARMEX_FSROOT

# expect STATUS PATTERN ARGUMENT... : how the command ends.
expect() { ends "$1" "$2" "${varmex[@]}" "${@:3}"; }

VARMEX_FSROOT=$here/samples
expect 0 '^  description +current$' show
expect 0 'Orlindt.*ORX-5105 Digitizer "DIGITIZER-A" +5\.0\.0 5\.0\.1 +x4/4' show 1
expect 0 '"ANALYZER-2" +37:00.0 37:00.1 38:00.0 +x4/8 reduced' show 2 --pci hex
expect 0 '\(module of slot 3\)' show 1
expect 0 '2>2 3>3 4>4 5>5 6>6-7$' show 1
expect 0 '^  star controller +PXIeChassis.*/StarTrigger1Controller$' show 1/10
expect 0 '^    library +libtessmere_trigger.so$' show 2
expect 0 '^    native +yes$' show 2
expect 0 'warning: The description could not be brought up to date .*\(varmex_warningFailedSync 380762\)' show --sync
expect 0 '^Chassis 3: Havrel Modular HM-1008$' show --sync
service=$(dirname "${varmex[-1]}")/service
LD_LIBRARY_PATH=$service/withoutmode expect 0 '^    native +no$' show 3
LD_LIBRARY_PATH=$service/withoutclose expect 1 '^!1  chassis 2, IsTriggerManagerNative: The PXI service library lacks a function.* \(ostrelerr_invalidParameter -52005\)$' show 2
expect 1 'There is no chassis 9: neither file has a section \[Chassis9\]\. \(varmex_errorUnknownItem -380751\)' show 9
expect 1 'Chassis 1 has no slot 99: neither file has a section \[Chassis1Slot99\]\.' show 1/99
expect 2 '"oct" is neither dec nor hex' show --pci oct
expect 2 '"nonsense" is no subcommand' nonsense
expect 0 ' PCI \(hex\) ' list --pci hex
expect 2 'subcommand' --nonsense
expect 2 'subcommand is required'
expect 0 "^$("${varmex[@]}" show | head -n 1)\$" --version
expect 0 '^PXIe_DStarC +2 +.*/DStarTrigger1Set0$' terminals 5.0.0
for address in 63:00.0 99.0.0; do expect 1 'No module has the PCI address 99\.0\.0\. .*-380751' terminals "$address"; done
for address in 5.0.0 0000:05:00.0 37:00.1; do expect 0 '^PXI_Trig7 +7 +.*/TriggerBus1$' terminals "$address"; done
expect 2 'another PCI domain than 0000' terminals 0001:05:00.0
expect 2 'neither BUS.DEVICE.FUNCTION in decimal' terminals 5:0:0
expect 0 '^calculate +\[\{"ticket":1,"destination":"PXI_Trig3"' route 5.0.0 PXI_Trig3 --token t
expect 0 '^reserve +done$' route 5.0.0 PXI_Star --token t
expect 0 '"step": "destroy"' route 5.0.0 PXIe_DStarB --json
expect 2 'no such terminal: x' route 5.0.0 x
expect 1 '^calculate  The module does not have this terminal\. \(telmar_ra_errorRoutingFault -313328\)$' route 5.0.0 PXI_Trig9
expect 1 '^varmex: The module does not have this terminal\. \(telmar_ra_errorRoutingFault -313328\)$' route 5.0.0 PXI_Trig9
expect 0 '^  1/9 +13\.0\.0 13\.0\.1 13\.1\.0  Orlindt Instruments, Inc\. ORX-4081 Multimeter "DMM"  x1/1$' find dmm
expect 2 'text' find ' '
expect 0 '^  1/7 +11\.0\.0 +DIO-LEFT +Havrel Modular +HM-6220 Digital I/O +x1/4 reduced$' list
expect 2 'excludes' list --csv --jsonl
expect 0 'lines 0 to 7 reach from each to the other' triggers 1/7 1/9
expect 0 '^  1  pxisys.ini +.Chassis1Slot9. absent$' explain 1/9 SlotType
expect 2 'there is no x here, but ChassisNumber, ' explain 1/9 x
expect 2 'neither 2 nor 2/5' explain 1/bridge/x
expect 2 '"[^[:cntrl:]]*x1B\[31m" is neither 2 nor' show $'\e[31m'
expect 0 '^\{\}$' list --jsonl --columns alias,width
# A full device, a narrow output, colours, a lock that another program holds.
unplain=$(for verb in '' show find list draw report check triggers explain terminals route watch save diff make; do
  COLUMNS=80 "${varmex[@]}" $verb --help | tr -d '\r'
done | grep -E '^.{81}|TEXT|FLOAT|UINT|[A-Z][a-z]+: -' || true)
is '' "$unplain" 'help in plain words, in 80 columns'
expect 2 '^--timeout: "nan" is no number of seconds from 0 to 4000000$' watch --timeout nan
expect 2 '^chassis: "x" is no number of a chassis' draw x -o -
for words in show --version 'show --help'; do
  "${varmex[@]}" $words >/dev/full 2>/dev/null
  is 1 "$?" "exit status of $words to a full device"
done
widest=$(COLUMNS=80 "${varmex[@]}" show 2>&1 | awk '{ if (length > most) most = length } END { print (most <= 80) ? "fits" : most }')
is fits "$widest" 'width of show in 80 columns'
is 0 "$("${varmex[@]}" show | grep -c $'\x1b')" 'colours in a pipe'
COLUMNS=45 expect 0 '^  Vendor +Orlindt Instruments, Inc\.$' list
if [ -z "$isWindows" ]; then
  # What may not be read, also by root, and what another program holds.
  newRoot "$here"/samples/*
  denied=("${varmex[@]}")
  [ "$(id -u)" -ne 0 ] || denied=(setpriv --bounding-set=-dac_override,-dac_read_search "${varmex[@]}")
  pxi=$VARMEX_FSROOT/etc/pxi
  lock=$VARMEX_FSROOT/var/lib/PXISA
  while IFS='|' read -r place status pattern words; do
    chmod 000 "$place"
    ends "$status" "$pattern" timeout 5 "${denied[@]}" $words
    chmod 755 "$place"
  done <<END
$pxi/pxiesys.ini|124|pxiesys.ini can't be opened; waiting since [0-9:]{8}, for at most 10 s|list
$pxi/pxisys.ini|2|can't read .*pxisys.ini|check
$pxi|1|You have no right to look at .*pxisys.ini|show
$pxi/registry.reg|1|^registry.reg: wrong: registry-not-read$|check
$pxi|2|can't look at .*pxisys.ini|check
$lock|1|You have no right to look at .*configuration.ini|show
$lock|1|^configuration.ini: wrong: session-fails$|check
$lock|1|^    .*no right to look at .*configuration.ini. Grant the right to read it|check
END
  exec 9>>"$lock/configuration.ini"
  flock 9
  ends 124 'another program holds the lock on the description; waiting since' timeout 5 "${varmex[@]}" show
  exec 9>&-
fi
newRoot
expect 0 '^No modules: there is no description, neither .*[/\\]pxisys.ini$' list
for words in 'draw -o -' 'triggers 1/2 1/3' 'explain DMM' 'terminals 5.0.0' 'route 5.0.0 PXI_Trig1' 'show 1' 'watch --once --timeout 0.1'; do
  expect 1 'There is no description, neither .*[/\\]pxisys.ini nor ' $words
done
expect 1 '^No modules: there is no description' find dmm
expect 0 '^No chassis: there is no description, neither .*[/\\]pxisys.ini$' show
expect 0 '"Chassis": \[\]' show --json
printf '[System]\nChassisList = 1\n[Chassis1]\nVendor = \xff\x1b\nModel = "\nSerialNumber = \\\nSlotList = ""\n' \
  >"$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
expect 0 '"ChassisModel": "\\""' show --json
echo '[System]' >"$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect 1 '^varmex: Section \[System\] has no ChassisList: .*[/\\]pxisys.ini, line 1\. ' show
rm "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect 1 '' watch --once --timeout 0.1
expect 0 '' watch --timeout 0.1

# finds PATTERN FILE SED-SCRIPT [PATTERN...] : what the check says of a sample with this change in a file.
finds() { checked 1 "$1" check "${@:2}"; }
passes() { checked 0 '^No findings\.$' check "$@"; }
# checked STATUS PATTERN WORDS FILE SED-SCRIPT [PATTERN...]
checked() {
  newRoot "$here"/samples/*
  sed -i "$5" "$VARMEX_FSROOT/etc/pxi/$4"
  for pattern in "$2" "${@:6}"; do expect "$1" "$pattern" $3; done
}
# What must be there and is missing is told like what can't be read.
checked 1 'slot 2/1, TriggerBusNumber .*Section \[Chassis2TriggerBus1\] has no SlotList' show pxiesys.ini '/^\[Chassis2TriggerBus1/,/^\[Chassis2S/{/^SlotList/d}'
checked 1 '^  1 +bus !1  bus 2 ' show pxisys.ini '/^\[Chassis1TriggerBridge1\]/,/^\[Chassis1T.*2/{/^Source/d}'
checked 1 '^  2 +!1 unknown ' show pxiesys.ini '/^\[Chassis1Slot2\]/,/^\[Chassis1Slot3/{/^SlotType/d}'
VARMEX_FSROOT=$here/samples
expect 0 '^No findings\.$' check
finds '^pxiesys.ini:17: wrong: missing-section: \[Chassis1\] SlotList$' pxiesys.ini '17s/18"/18,19"/' \
  'answers: slot 1/19 fails: Chassis 1 has no slot 19: .*\(varmex_errorUnknownItem -380751\)$'
finds '^1 finding\.$' pxiesys.ini '9s/ORX/X/' 'disagree on Model in section \[Chassis1\]\. \(varmex'
finds 'slot-without-bus: .Chassis1Slot11.$' pxiesys.ini 's/"7,8,9,10,11,12"/"7,8,9,10,12"/'
finds '^1 finding\.$' pxiesys.ini 's/"7,8,9,10,11,12"/"7,,9,10,11,12"/'
finds 'slot-on-two-buses: .Chassis1TriggerBus2. SlotList' pxiesys.ini 's/"7,8,9,/"6,7,8,9,/'
finds 'bridge-to-missing-bus: .Chassis1TriggerBridge1. DestinationTriggerBus' pxisys.ini '27s/=.*/= 9/'
finds '^pxisys.ini:50: doubtful: line-passed-over: .Chassis1LineMappingSpec1.$' pxisys.ini '50s/=//' \
  '^     \|  \^~~~~~~~~~~~~~~~~~~~~~~~$'
COLUMNS=80 finds '^    \[Chassis1LineMappingSpec1\] PXI_TRIG4$' pxisys.ini '50s/=.*/= "9"/'
finds '^  68 \| PCIBusNumber = ü$' pxisys.ini '68s/=.*/= ü/'
finds '^     \| ~~~~~~~~~~~~   \^~~~~$' pxisys.ini '68s/=.*/= 漢字x/'
finds '^     \| ~~~~~~~~~~~~            \^$' pxisys.ini '68s/.*/PCIBusNumber\t=\tü/'
finds '^  68 \| PCIBusNumber = \\xFC\\x1B$' pxisys.ini '68s/=.*/= \xfc\x1b/' '^     \| ~~~~~~~~~~~~   \^~~~~~~~$'
COLUMNS=40 finds '^  68 \| PCIBusNumber = 漢漢漢漢漢漢漢\.\.\.$' pxisys.ini '68s/=.*/= 漢漢漢漢漢漢漢漢漢漢漢漢漢/'
finds '^pxisys.ini:14: wrong: missing-item: .Chassis1. SlotList$' pxisys.ini '14s/=.*/=/' 'line gives it no value'
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
  for edit in 's/./&\x00/g' 's/./\x00&/g'; do finds 'in UTF-16 without its mark$' registry.reg "$edit"; done
  finds 'high byte first$' registry.reg '1s/^/\xfe\xff/'
  utf16="$wide;1s/^/\xff\xfe/"
  for edit in '1s/^/\xef\xbb\xbf/' "$utf16" '$a ; \xfc'; do passes registry.reg "$edit"; done
  finds '^1 finding\.$' pxisys.ini '10s/=.*/= "T\xfc"/'
  # A name in the bytes of a code page, by the encoding of the registry.
  codePage='^pxiesys.ini:.* wrong: code-page-identifier: .Chassis2. TriggerManager$'
  while IFS='|' read -r status told edit; do
    finds "$codePage" pxiesys.ini 's/^TriggerManager = "Tessmere"/TriggerManager = "T\xfc"/'
    sed -i "$edit" "$VARMEX_FSROOT/etc/pxi/registry.reg"
    expect "$status" "$told" check
  done <<END
1|$codePage|$utf16
0|^No findings\.$|\$a ; \xfc
END
fi
finds 'unreferenced-section: .Orphan.$' pxisys.ini '$a [Orphan]'
finds 'repeated-section: .Chassis1.$' pxisys.ini '$a [Chassis1]'
finds '^pxisys.ini:.* repeated-item: .System. ChassisList' pxisys.ini '5s/$/\nChassisList = 1/'
finds 'doubtful: missing-item: .Chassis1Slot5. PCIBusNumber$' pxisys.ini 68d
finds 'slot-covered-twice: .Chassis1Slot3. Perip' pxiesys.ini '150s/$/\nAddressInfo = PXI0::99-0.0::INSTR/'
# Addresses and lists: what the library takes as it is, and where it stops.
for edit in '68s/=.*/= None/' '69s/=.*/= None/' 's/^\[System\]/[PXI System]/' '176s/=.*/= 81/;177s/=.*/= 15/'; do passes pxisys.ini "$edit"; done
for edit in 's/PXI0::5-0.1/PXI0::255-0.7/' 's/PXI0::5-0.0::INSTR;/&;/' 's/OccupiedSlotList = "4"/OccupiedSlotList = "3,4"/' '50s/$/\nSystemTimingSet1 = 3/' \
  's/^.Chassis1StarSystemTimingSets1/[Chassis1StarSystemTimingSet1/'; do passes pxiesys.ini "$edit"; done
for address in 256-0.7 5-32.0 5-0.-1 5-0.8; do
  finds "no PCI address has these numbers: ${address/-/.}" pxiesys.ini "s/;PXI0::5-0.1/+PXI0::$address/"
done
for edit in '68s/=.*/= -1/' '69s/=.*/= -1/'; do finds 'no PCI address has these numbers: .*-1\..*0$' pxisys.ini "$edit"; done
finds 'no address of a device: "PXI0::5-0::INSTR"' pxiesys.ini 's/PXI0::5-0.1/PXI0::5-0/'
finds 'no address of a device: "PXI0::5-0.1"' pxiesys.ini 's/\(PXI0::5-0.1\)::INSTR/\1/'
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
checked 1 'StarTriggerNumber and [0-9]+ more: PXI_STAR7 in section .* has no value: "" in .*pxiesys\.ini, line 37\. ' show pxiesys.ini '37s/=.*/= ""/'
checked 1 'DStarTriggerNumber and [0-9]+ more: StarSystemTimingSet7 in section .* has no value: "" in .*, line 56\. ' show pxiesys.ini '56s/=.*/= ""/'
checked 1 'has no FunctionList: neither file has such a section\. ' show pxisys.ini '/^.Chassis3Slot4Function0Device8\]/d'
checked 1 '^1 fault hides 2 answers\. ' show pxisys.ini '49s/=.*/= 8/'
checked 1 'bridge 1, line 3 and 1 more: .*pxisys\.ini, line 49\. ' 'triggers 1/2 1/9' pxisys.ini '49s/=.*/= 8/'
checked 0 '^From +1/9 on no trigger bus$' 'triggers DMM TIMING' pxiesys.ini '23s/=.*/= "7"/'
checked 0 '^PXI_Star .*Tess.x1Bmere' 'terminals 51.0.0' pxiesys.ini 's/"Tessmere Labs"/"Tess\x1bmere"/'
checked 0 '^PXI_Star ' 'terminals 13.0.0' pxiesys.ini '23s/=.*/= "7"/'
checked 1 '^  "failureCount": 1$' 'find dmm --json' pxisys.ini '5s/=.*/= x/'
checked 1 '^\{"failures":\{"opening":\{"code":-380757,' 'list --jsonl' pxisys.ini '5s/=.*/= x/'
checked 1 'no module fits "nothing" among those that can be read$' 'find nothing' pxiesys.ini '17s/18"/18,19"/'
# What is doubtful alone, which no answer of the library shows, and what is right beside it.
finds 'bridge-onto-itself: .Chassis1TriggerBridge1.$' pxisys.ini '27s/=.*/= 1/'
finds 'files-disagree: .Chassis1TriggerBridge1. LineMappingSpec$' pxisys.ini '28s/=.*/= 2/'
finds 'out-of-range: .Chassis[0-9]+Slot[0-9]+.* PCIDeviceNumber$' pxisys.ini '0,/^PCIDeviceNumber = [0-9]/s//PCIDeviceNumber = 9/'
finds 'no trigger line: 8$' pxisys.ini '49s/=.*/= "8"/'
finds 'doubtful: bad-number: .Chassis1Slot1. PeripheralSlotLinkWidth1$' pxiesys.ini 's/^.Chassis1Slot1.$/&\nPeripheralSlotLinkWidth1 = x/'
finds 'doubtful: bad-number: .Chassis3Slot1. PCISlotPathRootBus$' pxisys.ini 's/^.Chassis3Slot1.$/&\nPCISlotPathRootBus = x/'
finds 'missing-slot: .Chassis1Slot3. PeripheralModuleOccupiedSlotList$' pxiesys.ini 's/OccupiedSlotList = "4"/OccupiedSlotList = "44"/'
finds 'slot-on-two-lines: .Chassis1StarTrigger1. SystemTimingSlot$' pxiesys.ini '29s/=.*/= 2/'
finds '^1 finding\.$' pxiesys.ini "$wide"
VARMEX_FSROOT=$work/nowhere
expect 2 'There is no description, neither .*pxisys.ini nor .*pxiesys.ini' check
expect 2 'VARMEX_FSROOT names another root' check
[ -n "$isWindows" ] || expect 1 'VARMEX_FSROOT names another root' show
newRoot
mkdir "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect 2 "can't read" check
for plans in "$(echo {express,classic}:{2..18}{,:0,:2})" express:18x255 classic:18x255; do
  VARMEX_FSROOT=$(mktemp -d -p "$work")
  expect 0 '' make "$VARMEX_FSROOT" $plans
  expect 0 '^No findings\.$' check
done
mkdir "$VARMEX_FSROOT/etc/pxi/registry.reg"
[ -n "$isWindows" ] || expect 1 'it is no regular file$' check
VARMEX_FSROOT=$(mktemp -d -p "$work")
expect 0 '' make "$VARMEX_FSROOT" express:4 classic:8:2x2 express:18:0
expect 0 '^Chassis 1: Orlindt Instruments, Inc. ORX-104$' show
expect 0 '^Chassis 3: Orlindt Instruments, Inc. ORP-108$' show
expect 0 '^  2 .* PXI3Slot2 ' show 3
expect 0 '^  4 +PXI-1 +-' show 3
expect 0 '^  18 +PXI-1 +- +3 ' show 4
expect 1 'already' make "$VARMEX_FSROOT" express
while IFS='|' read -r wrong why; do
  expect 2 "^CHASSIS: .*: $why" make "$VARMEX_FSROOT/new" express:18x200 "$wrong"
done <<'END'
express:1|SLOTS is 2 to 18, not 1$
express:19|SLOTS is 2 to 18, not 19$
express:8:9|MODULES is 0 to 8, not 9$
express:8x0|COUNT is 1 to 255, not 0$
express:8x99999999999|COUNT is 1 to 255, not 9
express:8x56|the installation has 256 chassis with it, and 255 at most$
espresso|not KIND
express:x2|not KIND
classic:8:|not KIND
express:8x2y|not KIND
END
expect 2 '^--pci-fault: no module is left' make "$VARMEX_FSROOT/new" classic:8 --pci-fault narrow

finish
