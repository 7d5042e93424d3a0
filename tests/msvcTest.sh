#!/usr/bin/env bash
# msvcTest.sh BUILD : a client of Microsoft's ABI, compiled by Clang and linked by lld-link against
# varmex.lib, runs on the sample under Wine. The headers are MinGW-w64's, made to do without its
# compiler.
source "$(dirname "$0")/steps.sh"
build=$(cd "$1" && pwd)

compile() {
  local compiler=$1
  shift
  "$compiler" --target=x86_64-pc-windows-msvc -fms-extensions -fno-ms-compatibility -Wall -Wextra -Werror \
    -Wno-static-in-inline -U_MSC_VER -D__MINGW32__ -D__MINGW64__ -D_UCRT \
    -I"$here/includes" "$@" -isystem /usr/x86_64-w64-mingw32/include
}

# With another default convention, which the library's functions and callbacks must not follow.
client() {
  compile clang-14 -O1 -Xclang -fdefault-calling-conv=vectorcall -c "$here/tests/msvc/client.c" \
    -o "$work/client.obj"
}

wrapper() {
  local std
  std=$(echo /usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++)
  compile clang++-14 -std=c++17 -fcxx-exceptions -fsyntax-only -nostdinc++ -isystem "$std" \
    -isystem "$std/x86_64-w64-mingw32" "$here/tests/msvc/wrapper.cpp"
}

# So does everything else that is exported or called back, or the linker would look for other names.
convention() {
  {
    printf '#include <%s>\n' stddef.h varmex/telmar_ra_varmex.h varmex/varmex.h
    echo 'static void*(__cdecl* const reallocate)(void*, size_t) = (telmar_ra_ReallocFunc)0;'
    echo 'const void* const all[] = {(const void*)&reallocate,'
    exports | sed 's/.*/(const void*)\&&,/'
    echo '0};'
  } >"$work/all.c"
  compile clang-14 -Xclang -fdefault-calling-conv=vectorcall -c "$work/all.c" -o "$work/all.obj" &&
    lld-link-14 /dll /noentry /out:"$work/all.dll" "$work/all.obj" "$build/lib/varmex.lib"
}

link() {
  printf '%s\n' 'LIBRARY msvcrt.dll' EXPORTS exit free malloc memmove memset printf strlen \
    __C_specific_handler >"$work/msvcrt.def"
  llvm-dlltool-14 -m i386:x86-64 -d "$work/msvcrt.def" -l "$work/msvcrt.lib" &&
    lld-link-14 /subsystem:console /entry:mainCRTStartup /out:"$work/client.exe" \
      "$work/client.obj" "$build/lib/varmex.lib" "$work/msvcrt.lib" &&
    cp "$build/bin/varmex.dll" "$work"
}

# runs PXISYS PXIESYS LINE... : the client prints each line, alone on it.
runs() {
  local windows=$WINEPREFIX/drive_c/windows output result=0
  cp "$1" "$windows/pxisys.ini" && cp "$2" "$windows/pxiesys.ini" || return 1
  shift 2
  output=$(timeout -s KILL 120 wine "$work/client.exe") || result=1
  rm "$windows"/pxi*sys.ini
  echo "$output"
  for line in "$@"; do grep -qx "$line" <<<"${output//$'\r'/}" || result=1; done
  return "$result"
}

try 'the C header' client
try 'the C++ header' wrapper
try 'the import library' link
try 'the calling convention' convention
sample=$here/samples/etc/pxi
try 'the sample' runs "$sample/pxisys.ini" "$sample/pxiesys.ini" 'chassis 3: .*' 'code 0'
printf '%s\n' '[System]' ChassisList=1 '[Chassis1]' Vendor=V Model=M TriggerBridgeList=2 SlotList=2 \
  '[Chassis1Slot2]' PCISlotPath=a,b '[Chassis1TriggerBridge2]' LineMappingSpec=2 \
  '[Chassis1LineMappingSpec2]' PXI_TRIG0=1,8 >"$work/pxisys.ini"
: >"$work/pxiesys.ini"
try 'a destination line 8' runs "$work/pxisys.ini" "$work/pxiesys.ini" 'bridge: -1' 'code 0'

finish
