# Declares what a source folder holds. Three lists:
#   CORE   no Win32 call: built for Windows, and natively under the sanitizers
#   WIN32  may include <windows.h>: built for Windows only
#   TESTS  one test program of the folder, `<folder>_test`, from files that run on both sides;
#          WIN32_TESTS join it on Windows, NATIVE_TESTS (scripted fakes) natively.
#
# All product code goes into one archive, qorlix_core: the folders are layers of one program, and
# tools/check_includes.py holds their order. A native program links the archive together with
# tests/fakes, which stand in for the WIN32 files.
add_library(qorlix_core STATIC)
if(QORLIX_COVERAGE)
  # Programs of one build write into the same counters, and the server has threads.
  target_compile_options(qorlix_core PRIVATE --coverage -fprofile-update=atomic)
endif()
# The fuzzers of fuzz/ link what the tests link, so the archive tells them which of its branches an
# input reaches; other programs do not listen.
if(QORLIX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(qorlix_core PRIVATE -fsanitize=fuzzer-no-link)
endif()

function(qorlix_folder name)
  cmake_parse_arguments(ARG "" "" "CORE;WIN32;TESTS;WIN32_TESTS;NATIVE_TESTS" ${ARGN})
  list(TRANSFORM ARG_CORE PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(TRANSFORM ARG_WIN32 PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  target_sources(qorlix_core PRIVATE ${ARG_CORE})
  if(WIN32)
    target_sources(qorlix_core PRIVATE ${ARG_WIN32})
    set(tests ${ARG_TESTS} ${ARG_WIN32_TESTS})
  else()
    set(tests ${ARG_TESTS} ${ARG_NATIVE_TESTS})
  endif()
  if(tests AND BUILD_TESTING)
    qorlix_test(${name}_test ${tests})
  endif()
endfunction()

# The test framework's headers cost more than most tests; they are compiled once for all programs.
# Tests are not optimised: that halves the build, and what they test keeps its own flags.
if(BUILD_TESTING)
  add_library(qorlix_test_headers OBJECT tests/support/TestHeaders.cpp)
  target_link_libraries(qorlix_test_headers PRIVATE GTest::gmock)
  target_compile_options(qorlix_test_headers PRIVATE -O0)
  target_precompile_headers(qorlix_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endif()

# A GoogleTest program, registered with CTest (under Wine when cross-compiled).
function(qorlix_test target)
  add_executable(${target} ${ARGN})
  target_link_libraries(${target} PRIVATE qorlix_test_support GTest::gmock_main)
  target_compile_options(${target} PRIVATE -O0)
  target_precompile_headers(${target} REUSE_FROM qorlix_test_headers)
  add_test(NAME ${target} COMMAND ${target})
endfunction()

# A test program that shows windows, or starts one that does. Under Wine it gets a screen and a
# prefix of its own (tools/wine-run.sh), and these programs take turns.
function(qorlix_needs_display target)
  set_property(TEST ${target} APPEND PROPERTY ENVIRONMENT QORLIX_DISPLAY=1)
  set_property(TEST ${target} APPEND PROPERTY RESOURCE_LOCK display)
endfunction()
