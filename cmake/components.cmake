# What every target of the project has in common, and how a component is declared.

set(CMAKE_C_STANDARD 99)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
find_package(Threads REQUIRED)

if(WIN32)
  set(VARMEX_PLATFORM windows)
else()
  set(VARMEX_PLATFORM posix)
endif()

add_library(varmex_common INTERFACE)
target_compile_options(varmex_common INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror>
  -fvisibility=hidden
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 sees overlaps in the concatenation of strings where there are none.
  target_compile_options(varmex_common INTERFACE -Wno-restrict)
endif()
target_include_directories(varmex_common INTERFACE
  ${PROJECT_SOURCE_DIR}/includes ${PROJECT_SOURCE_DIR})
target_link_libraries(varmex_common INTERFACE Threads::Threads)

# What distributions expect of the libraries and programs that they ship (tests/checkHardening.sh).
# The debug builds have sanitizers instead.
add_library(varmex_hardening INTERFACE)
set(optimised $<NOT:$<CONFIG:Debug>>)
target_compile_options(varmex_hardening INTERFACE
  $<${optimised}:-fstack-protector-strong>
  $<${optimised}:-U_FORTIFY_SOURCE>
  $<${optimised}:-D_FORTIFY_SOURCE=2>)
if(WIN32)
  # The compiler brings its runtime for the stack protector where it is told of it when linking.
  target_link_options(varmex_hardening INTERFACE
    -fstack-protector-strong -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
else()
  target_compile_options(varmex_hardening INTERFACE $<${optimised}:-fcf-protection>)
  target_link_options(varmex_hardening INTERFACE -Wl,-z,relro,-z,now)
endif()

# The cross compiler must not see the system's include folder: the header-only libraries that both
# builds share are linked into a folder of the build.
set(headers ${PROJECT_BINARY_DIR}/headers)
foreach(library boost CLI nlohmann)
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK /usr/include/${library} ${headers}/${library} SYMBOLIC)
endforeach()
target_include_directories(varmex_common SYSTEM INTERFACE ${headers})

if(WIN32)
  target_compile_definitions(varmex_common INTERFACE
    _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX _FILE_OFFSET_BITS=64)
  target_link_options(varmex_common INTERFACE -static)
  target_compile_options(varmex_common INTERFACE -g1)  # for the symbols beside the DLL
endif()

# varmex_component(NAME SOURCES file... PLATFORM file... NEIGHBOURS target...)
# A component as a static library. PLATFORM files are named below the folder that differs by
# platform with @ in the place of its name; NEIGHBOURS is all that the component may include from.
function(varmex_component name)
  cmake_parse_arguments(arg "" "" "SOURCES;PLATFORM;NEIGHBOURS" ${ARGN})
  list(TRANSFORM arg_PLATFORM REPLACE "@" ${VARMEX_PLATFORM})
  add_library(${name} STATIC ${arg_SOURCES} ${arg_PLATFORM})
  target_link_libraries(${name} PUBLIC varmex_common ${arg_NEIGHBOURS} PRIVATE varmex_hardening)
endfunction()
