#!/usr/bin/env bash
# completionTest.sh [RUNNER...] VARMEX : what Tab offers in bash, zsh and fish; of Windows's command in bash.
source "$(dirname "$0")/steps.sh"
completions=$here/tools/varmex/completions
# The shells find the command by its name, and their own settings and caches in an empty home.
mkdir "$work/bin" "$work/home"
printf '#!/bin/sh\nexec %s "$@"\n' "$(printf '%q ' $(realpath "$@"))" >"$work/bin/varmex"
chmod +x "$work/bin/varmex"
PATH=$work/bin:$PATH
export HOME=$work/home
shells=(inBash inZsh inFish)
[[ ${!#} != *.exe ]] || shells=(inBash)
unset XDG_CONFIG_HOME XDG_DATA_HOME
export VARMEX_FSROOT

# What each shell offers for the words behind "varmex", the last of which is unfinished, between
# spaces; ":files" where it leaves that to the names of files.
inBash() {
  source "$completions/varmex.bash"
  compopt() { COMPREPLY=(:files); }
  # As bash takes the words apart.
  mapfile -t COMP_WORDS < <(printf '%s\n' varmex "$@" | sed -E 's/(.):/\1\n:/; s/:(.)/:\n\1/')
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  _varmex
  local word=${*: -1}
  [[ $word != *:* ]] || COMPREPLY=("${COMPREPLY[@]/#/${word%:*}:}")
  echo "${COMPREPLY[*]}"
}

inZsh() {
  zsh -f -c '
    _files() { print :files }
    _describe() { print -r -- "${(@)${(@)${(@)candidates//\\:/=}%%:*}//=/:}" }
    words=(varmex "${@[2,-1]}")
    CURRENT=$#words
    source $1' zsh "$completions/_varmex" "$@"
}

inFish() {
  fish --no-config -c '
    source $argv[1]
    function __fish_complete_path; echo :files; end
    complete -C "varmex $argv[2..-1]" | string replace -r "\t.*" "" | string join " "' \
    "$completions/varmex.fish" "$@"
}

# expect CANDIDATES WORD... : in every shell, and nothing on the standard error output.
expect() {
  local shell
  for shell in "${shells[@]}"; do
    is "$1" "$("$shell" "${@:2}" 2>&1)" "$shell varmex ${*:2}"
  done
}

VARMEX_FSROOT=$here/samples
expect 'show find list draw report check triggers explain terminals route watch save diff make' ''
expect 'show' sh
expect '--help --version' --
expect '--json' check --j
for verb in show draw; do expect '1 2 3' "$verb" ''; done
expect '1 1/1 1/2 1/3 1/4 1/5 1/6 1/7 1/8 1/9 1/10 1/11 1/12 1/13 1/14 1/15 1/16 1/17 1/18' show 1
for words in 'show --json' 'triggers 1/9'; do expect '2/3' $words 2/3; done
expect 'SlotNumber SlotType' explain 1/7 Slot
expect 'BridgeNumber' explain 1/bridge/1 BridgeN
for words in 'report -o' 'draw 1 -o' make 'check --from' save 'diff a.json'; do expect ':files' $words ''; done
for words in 'draw 1' 'route 99.0.0' 'watch --timeout' nonsense; do expect '' $words ''; done
expect 'express:18' make /tmp/rack classic:8 e
expect 'missing' make --pci-fault mi
expect 'Version' explain machine V
expect '5.0.0 5.0.1' terminals 5.
expect '05:00.0 05:00.1' terminals 05:
expect '0000:05:00.0 0000:05:00.1' terminals 0000:05:
expect 'PXIe_DStarA PXIe_DStarB PXIe_DStarC' route --token me 5.0.0 PXIe
expect 'dec hex' show --pci ''
expect 'DIGITIZER-A DIGITIZER-B' find DIG
expect 'place,address place,addresses' list --columns place,addr
expect 'link-width' diff --ignore link-w

# Nothing to read, something that can't be read, a chassis of which one slot is broken.
VARMEX_FSROOT=$work/nowhere
for verb in show terminals; do expect '' "$verb" ''; done
newRoot
echo '[System]' >"$VARMEX_FSROOT/etc/pxi/pxisys.ini"
expect '' show ''
rm "$VARMEX_FSROOT/etc/pxi/pxisys.ini"
printf '[System]\nChassisList = 1\n[Chassis1]\nVendor = V\nModel = \x1b\tM\nSerialNumber = S\nSlotList = 5,6\n[Chassis1Slot5]\nAddressInfo = PXI0::4-0.0::INSTR\nSlotType = PXIePeripheralSlot\nVendor = W\nModel = D\n' \
  >"$VARMEX_FSROOT/etc/pxi/pxiesys.ini"
expect '1' show ''
expect '1/5 1/6' show 1/
expect '4.0.0' terminals ''

# What only POSIX systems have: roots, and this lock. While another program writes the description,
# nobody waits for it.
if [[ ${!#} != *.exe ]]; then
  expect '2/3' show --from "$here/samples" 2/3
  exec 9>>"$VARMEX_FSROOT/var/lib/PXISA/configuration.ini"
  flock 9
  sleep 30 &
  exec 9>&-
  expect '' show ''
  expect 'show' sh
  kill $!
fi

finish
