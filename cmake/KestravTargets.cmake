# What every target of this project shares, and the three ways to declare one.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_program(CCACHE ccache)
if(CCACHE)
  # What one clone has compiled serves every other: nothing in an object tells where the tree stands but what a debugger is
  # told of the folder it was built in. A precompiled header is compared by what is in it. Who sets the folder himself,
  # as the packages' build does, wants it otherwise.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
  if(NOT DEFINED ENV{CCACHE_BASEDIR})
    set(CMAKE_CXX_COMPILER_LAUNCHER env "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
      CCACHE_SLOPPINESS=pch_defines,time_macros "${CCACHE}")
  endif()
endif()

add_library(kestrav_warnings INTERFACE)
# A compiler that is newer than this tree may warn of more: that ends our own builds, and nobody else's.
option(KESTRAV_WARNINGS_ARE_ERRORS "Let a warning of the compiler end the build" OFF)
target_compile_options(kestrav_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wformat=2)
if(KESTRAV_WARNINGS_ARE_ERRORS)
  target_compile_options(kestrav_warnings INTERFACE -Werror)
endif()
# When it optimises, g++ 12 sees overlapping copies in `"literal" + std::string()` (GCC bug 105651) and unset members in
# every std::optional of a container (GCC bug 80635). clang and the sanitizers look for the real ones.
target_compile_options(kestrav_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-maybe-uninitialized>)

# kestrav_library(NAME SOURCES file... [PUBLIC target...] [PRIVATE target...])
# A folder's library. Headers are found from the root of the tree: #include "socket/TCPClient.h".
function(kestrav_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME "kestrav_${name}")
  target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>")
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE $<BUILD_INTERFACE:kestrav_warnings> ${arg_PRIVATE})
endfunction()

# What counts the lines that are reached has to be in each program.
function(kestrav_count_at_exit name)
  if(TARGET count_at_exit)
    target_link_libraries(${name} PRIVATE count_at_exit)
  endif()
endfunction()

# kestrav_program(NAME SOURCES file... LINKS target...): a program, built into bin/.
function(kestrav_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE kestrav_warnings ${arg_LINKS})
  kestrav_count_at_exit(${name})
endfunction()

# kestrav_test(NAME SOURCES file... LINKS target... [WRAPPER command...] [TIMEOUT seconds] [SERIAL])
# A googletest program; each of its cases is one case of ctest. WRAPPER is put in front of the program.
# SERIAL is for cases that share something the machine has once, such as port 9090.
function(kestrav_test name)
  cmake_parse_arguments(arg "SERIAL" "TIMEOUT" "SOURCES;LINKS;WRAPPER" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE kestrav_warnings ${arg_LINKS} places GTest::gmock GTest::gtest_main)
  kestrav_count_at_exit(${name})
  target_precompile_headers(${name} REUSE_FROM gmock_header)
  if(arg_WRAPPER)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${arg_WRAPPER}")
  endif()
  set(properties TIMEOUT ${arg_TIMEOUT})
  if(arg_SERIAL)
    list(APPEND properties RUN_SERIAL TRUE)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# kestrav_python_cases(PREFIX PROGRAM INTERPRETER python [ENVIRONMENT name=value...])
# Each method test_OUTCOME that unittest finds in the *_test.py of this folder is the case PREFIX.CLASS.OUTCOME of ctest,
# run with the programs of this build, in a network and with mounts of its own. PROGRAM is one of those programs.
# The cases are listed when the tests are built, again whenever a Python file of the tests has changed.
function(kestrav_python_cases prefix program)
  cmake_parse_arguments(arg "" "INTERPRETER" "ENVIRONMENT" ${ARGN})
  set(tests "${CMAKE_SOURCE_DIR}/tests")
  set(list "${CMAKE_CURRENT_BINARY_DIR}/${prefix}_cases.cmake")
  set(path "${CMAKE_CURRENT_SOURCE_DIR}:${tests}/road:${tests}/sandbox")
  file(GLOB_RECURSE modules CONFIGURE_DEPENDS "${tests}/*.py")
  add_custom_command(OUTPUT "${list}"
    COMMAND ${CMAKE_COMMAND} -E env "KESTRAV_PROGRAMS=$<TARGET_FILE_DIR:${program}>" PYTHONDONTWRITEBYTECODE=1
      "PYTHONPATH=${path}" ${arg_ENVIRONMENT}
      ${arg_INTERPRETER} "${tests}/runner/list_cases.py" "${CMAKE_CURRENT_SOURCE_DIR}" ${prefix} "${list}"
      "${tests}/sandbox/isolated" ${arg_INTERPRETER} "${tests}/runner/run_case.py"
    DEPENDS ${modules}
    COMMENT "Listing the cases of ${prefix}"
    VERBATIM)
  add_custom_target(${prefix}_cases ALL DEPENDS "${list}")
  # What has not been built must show, as it does with the other tests.
  set(include "${CMAKE_CURRENT_BINARY_DIR}/${prefix}_include.cmake")
  file(WRITE "${include}" "if(EXISTS \"${list}\")\n  include(\"${list}\")\nelse()\n"
    "  add_test(${prefix}_cases_NOT_BUILT ${prefix}_cases_NOT_BUILT)\nendif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${include}")
endfunction()
