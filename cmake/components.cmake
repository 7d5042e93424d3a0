# What every target of the project has in common, and how a component is declared.

set(CMAKE_C_STANDARD 99)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
find_package(Threads REQUIRED)

# Readers of the files, digests and JSON look at 16 bytes at a time as x86-64 does.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("
  #if !defined __x86_64__ || defined __ILP32__ || __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
  #error
  #endif
  int main() {}" VARMEX_TARGET_SERVED)
if(NOT VARMEX_TARGET_SERVED)
  message(FATAL_ERROR "varmex is for 64-bit x86 alone: "
    "targets of 32 bits, big-endian ones and other processors can't be built for.")
endif()

if(WIN32)
  set(VARMEX_PLATFORM windows)
else()
  set(VARMEX_PLATFORM posix)
endif()

add_library(varmex_common INTERFACE)
target_compile_options(varmex_common INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${VARMEX_WERROR}>:-Werror>
  -fvisibility=hidden
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
# What is built elsewhere than among the sources doesn't tell where, either.
cmake_path(IS_PREFIX PROJECT_SOURCE_DIR ${PROJECT_BINARY_DIR} builds_among_sources)
if(NOT builds_among_sources)
  target_compile_options(varmex_common INTERFACE -ffile-prefix-map=${PROJECT_BINARY_DIR}/=build/)
endif()
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
file(MAKE_DIRECTORY ${headers})
target_include_directories(varmex_common SYSTEM INTERFACE ${headers})

# varmex_headers(FOLDER FILE) : the library of headers that has FILE in its FOLDER.
function(varmex_headers folder file)
  find_path(VARMEX_${folder}_HEADERS ${folder}/${file} REQUIRED NO_CMAKE_FIND_ROOT_PATH
    HINTS ${BOOST_ROOT} ENV BOOST_ROOT PATH_SUFFIXES include)
  file(CREATE_LINK ${VARMEX_${folder}_HEADERS}/${folder} ${headers}/${folder} SYMBOLIC)
endfunction()

varmex_headers(boost version.hpp)
file(STRINGS ${headers}/boost/version.hpp boost_version REGEX "define BOOST_VERSION ")
string(REGEX REPLACE "[^0-9]" "" boost_version ${boost_version})
if(boost_version LESS 107400)
  message(FATAL_ERROR "varmex needs Boost 1.74 or later: ${VARMEX_boost_HEADERS} has ${boost_version}.")
endif()
# The command alone needs these.
if(PROJECT_IS_TOP_LEVEL)
  varmex_headers(CLI CLI.hpp)
  varmex_headers(nlohmann json.hpp)
endif()

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
