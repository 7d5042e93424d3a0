#!/usr/bin/env bash
# commandTest.sh VARMEX : what the command prints, and how it ends.
set -uo pipefail
varmex=$1
export VARMEX_FSROOT
here=$(cd "$(dirname "$0")" && pwd)
passed=0
failed=0

# expect STATUS PATTERN ARGUMENT... : the exit status, and a line that both outputs together hold.
expect() {
  local status=$1 pattern=$2 output result=0
  shift 2
  output=$("$varmex" "$@" 2>&1) || result=$?
  if [ "$result" -eq "$status" ] && grep -qE -- "$pattern" <<<"$output"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf 'varmex %s: status %s, wanted %s and "%s" in\n%s\n' "$*" "$result" "$status" "$pattern" "$output"
  fi
}

VARMEX_FSROOT=$here/../samples
expect 0 '^  description +current$' show
expect 0 '^Chassis 3: Havrel Modular HM-1008$' show
expect 0 'Orlindt.*ORX-5105 Digitizer "DIGITIZER-A" +5:0\.0 5:0\.1 +x4/4' show 1
expect 0 '\(module of slot 3\)' show 1
expect 0 '2>2 3>3 4>4 5>5 6>6-7$' show 1
expect 0 '^  star controller +PXIeChassis.*/StarTrigger1Controller$' show 1/10
expect 0 '"SlotType": 34' show 1/10 --json
expect 0 '"BridgeLineMapping7": 0' show --json
expect 0 '^    library +libtessmere_trigger.so$' show 2
expect 0 '^    native +yes$' show 2
expect 0 'warning 380762 \(varmex_warningFailedSync\)' show --sync
expect 0 '^Chassis 3: Havrel Modular HM-1008$' show --sync
service=$(dirname "$varmex")/service
LD_LIBRARY_PATH=$service/withoutmode expect 0 '^    native +no$' show 3
LD_LIBRARY_PATH=$service/withoutmode expect 0 '^    native +yes$' show 2
LD_LIBRARY_PATH=$service/withoutclose expect 0 '^    native +error -52005$' show 2
expect 1 'error -380751 \(varmex_errorUnknownItem\)' show 9
expect 1 'slotNum: 99' show 1/99
expect 2 'CHASSIS' show x
expect 2 'subcommand' --nonsense
expect 2 'subcommand is required'
expect 0 '^PXI_Trig7 +7 +.*/TriggerBus1$' terminals 5.0.0
expect 0 '^PXIe_DStarC +2 +.*/DStarTrigger1Set0$' terminals 5.0.0
expect 0 '"busType": "PXI_Star"' terminals 5.0.0 --json
expect 1 'error -380751' terminals 99.0.0
expect 0 '^calculate +\[\{"ticket":1,"destination":"PXI_Trig3"' route 5.0.0 PXI_Trig3 --token t
expect 0 '^reserve +done$' route 5.0.0 PXI_Star --token t
expect 0 '"step": "destroy"' route 5.0.0 PXIe_DStarB --json
expect 1 'no such terminal: x' route 5.0.0 x
VARMEX_FSROOT=$(mktemp -d)
mkdir -p "$VARMEX_FSROOT/etc/pxi" "$VARMEX_FSROOT/var/lib/PXISA"
expect 0 '^No chassis\.$' show
expect 0 '"Chassis": \[\]' show --json
printf '[System]\nChassisList = 1\n[Chassis1]\nVendor = \xff\x1b\nModel = "\nSerialNumber = \\\nSlotList = ""\n' \
  >"$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
expect 0 '"ChassisModel": "\\""' show --json
echo '[System]' >"$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect 1 'wrappedMessage: Section System item: ChassisList not found' show
rm "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect 1 '' watch --once --timeout 0.1
expect 0 '' watch --timeout 0.1
# In the background: first a break, then a mend with another model, a new chassis and a module.
(
  sleep 0.5
  echo '[System]' >"$VARMEX_FSROOT/etc/pxi/pxisys.ini"
  sleep 0.5
  printf '[System]\nChassisList = 1,2\n[Chassis1]\nVendor = V\nModel = N\nSerialNumber = S\nSlotList = 5\n[Chassis1Slot5]\nAddressInfo = PXI0::4-0.0::INSTR\nSlotType = PXIePeripheralSlot\nVendor = W\nModel = D\n[Chassis2]\nVendor = V\nModel = M\nSerialNumber = S\nSlotList = ""\n' \
    >"$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
  rm "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
) &
watched=$("$varmex" watch --once --timeout 20 2>&1)
wait
for pattern in '^broken: varmex_errorInformationNotAvailable' '^  changed  chassis 1 \(V N\)$' '^  new      chassis 2 \(V M\)$' \
  '^  new      module in slot 1/5 \(W D\)$'; do
  if grep -qE -- "$pattern" <<<"$watched"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf 'varmex watch: wanted "%s" in\n%s\n' "$pattern" "$watched"
  fi
done
rm -r "$VARMEX_FSROOT"
VARMEX_FSROOT=$(mktemp -d)
expect 0 '' make "$VARMEX_FSROOT" express:4 classic:8:2x2 express:18:0
expect 0 '^Chassis 1: Orlindt Instruments, Inc. ORX-104$' show
expect 0 '^Chassis 3: Orlindt Instruments, Inc. ORP-108$' show
expect 0 '^  2 .* PXI3Slot2 ' show 3
expect 0 '^  4 +PXI-1 +-' show 3
expect 0 '^  18 +PXI-1 +- +3 ' show 4
expect 1 'already' make "$VARMEX_FSROOT" express
for wrong in express:1 express:19 espresso express:x2 classic:8: express:8x0 express:8x256 express:8x2y; do
  expect 2 'CHASSIS' make "$VARMEX_FSROOT/new" "$wrong"
done
rm -r "$VARMEX_FSROOT"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
