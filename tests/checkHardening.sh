#!/usr/bin/env bash
# checkHardening.sh FILE... : what a Release build puts into its libraries and programs against
# attacks is really in them; on Windows its version, too.
source "$(dirname "$0")/steps.sh"
version=$(sed -nE 's/^project\(varmex VERSION ([0-9.]+) .*/\1/p' "$here/CMakeLists.txt")

# holds FILE WHAT PATTERN COMMAND... : a line of the command's output on the file.
holds() { try "$1: $2" grep -E -- "$3" <("${@:4}" "$1" 2>&1); }

# The first instruction of every exported function is a landing place of indirect calls.
landings() {
  local exports addresses
  exports=$(nm -D --defined-only "$1" | sed -nE 's/^0*([0-9a-f]+) T .*/\1/p')
  addresses=$(objdump -d --no-show-raw-insn "$1" | sed -nE 's/^ +([0-9a-f]+):\s+endbr64.*/\1/p')
  grep -vxF "$addresses" <<<"$exports" || echo 'all of them'
}

for file in "$@"; do
  case $file in
    *.dll | *.exe)
      for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
        holds "$file" "$flag" "^\s+$flag\$" x86_64-w64-mingw32-objdump -p
      done
      holds "$file" 'the version' "FILEVERSION ${version//./, }, 0" x86_64-w64-mingw32-windres -O rc -J coff
      # The symbols of a library that ships stand beside it.
      symbols=$file
      [ ! -e "$file.debug" ] || symbols=$file.debug
      holds "$symbols" 'the stack protector' ' __stack_chk_fail$' x86_64-w64-mingw32-nm
      holds "$symbols" 'FORTIFY' ' __chk_fail$' x86_64-w64-mingw32-nm
      ;;
    *)
      holds "$file" 'RELRO' '^ +GNU_RELRO ' readelf -lW
      holds "$file" 'immediate binding' 'FLAGS_1.* NOW' readelf -dW
      holds "$file" 'position independence' 'Type: +DYN ' readelf -hW
      holds "$file" 'the stack protector' ' __stack_chk_fail' nm -D
      holds "$file" 'FORTIFY' ' U __[a-z]+_chk' nm -D
      case $file in *.so) holds "$file" 'CET' '^all of them$' landings ;; esac
      ;;
  esac
done
finish
