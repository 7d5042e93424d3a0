# Behind the linking of the DLL: its symbols go into a file beside it, and Microsoft's linker gets
# an import library of its own kind.
#   cmake -D DLL=... -D DEF=... -D LIB=... -D OBJCOPY=... -D DLLTOOL=... -P finishDll.cmake
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${OBJCOPY} --only-keep-debug ${DLL} ${DLL}.debug)
run(${OBJCOPY} --strip-debug --strip-unneeded --add-gnu-debuglink=${DLL}.debug ${DLL})

# By name: the numbers that the linker gives are no promise.
file(READ ${DEF} text)
string(REGEX REPLACE " @[0-9]+" "" text "${text}")
cmake_path(GET DLL FILENAME name)
file(WRITE ${DEF} "LIBRARY ${name}\n${text}")
run(${DLLTOOL} -m i386:x86-64 -d ${DEF} -l ${LIB})
