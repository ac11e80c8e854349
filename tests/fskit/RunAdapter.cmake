# The adapter at work: its own sources, counted by hand on a runtime without ARC, over classes of the
# tests' own in the place of the system's, driven as the system drives it, against a host on a real
# socket. Each scenario is a run of its own; every call of a run has to get exactly one reply.
set(CMAKE_OBJC_COMPILER ${TARNEL_OBJC_COMPILER})
enable_language(OBJC)

# The runtime's headers lie among GCC's own.
execute_process(COMMAND ${TARNEL_GCC} -print-file-name=include OUTPUT_VARIABLE gcc_include
                OUTPUT_STRIP_TRAILING_WHITESPACE)

add_library(
  fskit_objc OBJECT
  ${TARNEL_ADAPTER_SOURCES}
  fakes/BlockObjects.m
  fakes/FakeFileSystem.m
  fakes/FakeItems.m
  fakes/FakeLiving.m
  fakes/FakeLog.m
  fakes/FakeNames.m
  fakes/FakeVolume.m
  fakes/SeenCounts.m
  run/Attributes.m
  run/Enumerations.m
  run/Lifetimes.m
  run/Loading.m
  run/LogLines.m
  run/Lookups.m
  run/Planted.m
  run/Reads.m
  run/Refusals.m
  run/SurfaceSpy.m
  run/System.m
  run/Threads.m
  run/main.m)
target_compile_options(
  fskit_objc
  PRIVATE -std=gnu17
          -fobjc-runtime=gcc
          -fblocks
          -fexceptions
          -fobjc-exceptions
          -fconstant-string-class=NSConstantString
          -Wall
          -Wextra
          -Werror
          # GNUstep's declarations say less of constness and of initialisers than the system's, under
          # which the adapter's sources are checked.
          -Wno-incompatible-pointer-types-discards-qualifiers
          -Wno-objc-designated-initializers
          -Wno-incomplete-implementation
          -isystem
          ${TARNEL_GNUSTEP_INCLUDE}
          "SHELL:-idirafter ${gcc_include}")
target_compile_definitions(fskit_objc PRIVATE GNUSTEP GNUSTEP_BASE_LIBRARY=1 _NATIVE_OBJC_EXCEPTIONS
                                              _GNU_SOURCE FSKIT_CLASSES_RUN)
target_include_directories(
  fskit_objc PRIVATE gnustep declarations/fskit fakes run ${TARNEL_ADAPTER}/objc
                     ${TARNEL_ADAPTER}/include)

add_executable(fskit_run run/BadCoreForRun.cpp run/HostForRun.cpp ../support/TreeHost.cpp)
set_target_properties(fskit_run PROPERTIES LINKER_LANGUAGE CXX)
target_include_directories(fskit_run PRIVATE run)
target_link_options(fskit_run PRIVATE -Wl,--wrap=tarnelVolumeEnumerate)
# The blocks runtime first: GNUstep's library has a way of copying blocks that copies nothing.
target_link_libraries(
  fskit_run PRIVATE fskit_objc TarnelFSKitCore tarnel_test_support tarnel_options GTest::gtest
                    ${TARNEL_BLOCKS_RUNTIME} -lgnustep-base -lobjc ${CMAKE_DL_LIBS})

# Suppressions go by the names of functions.
find_program(TARNEL_SYMBOLIZER NAMES llvm-symbolizer-19 llvm-symbolizer llvm-symbolizer-14)
set(symbolizer ASAN_SYMBOLIZER_PATH=${TARNEL_SYMBOLIZER} TSAN_SYMBOLIZER_PATH=${TARNEL_SYMBOLIZER})

set(scenarios ${CMAKE_CURRENT_SOURCE_DIR}/run/Scenarios.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${scenarios})
file(STRINGS ${scenarios} scenario_lines REGEX "^SCENARIO")
foreach(line IN LISTS scenario_lines)
  string(REGEX REPLACE "^SCENARIO\\((.*)\\)$" "\\1" scenario "${line}")
  add_test(NAME fskit.run.${scenario} COMMAND fskit_run ${scenario})
  set_tests_properties(fskit.run.${scenario} PROPERTIES TIMEOUT 300 ENVIRONMENT "${symbolizer}")
endforeach()

# A sanitizer that finds nothing in the runs has to find what is there on purpose.
set(TARNEL_FSKIT_PLANTED "" CACHE STRING "The fault that this build's sanitizer has to find: leak or race")
if(TARNEL_FSKIT_PLANTED STREQUAL "leak")
  set(report "LeakSanitizer: detected memory leaks.*initWithHome")
elseif(TARNEL_FSKIT_PLANTED STREQUAL "race")
  set(report "ThreadSanitizer: data race.*Planted")
endif()
if(TARNEL_FSKIT_PLANTED)
  add_test(NAME fskit.planted.${TARNEL_FSKIT_PLANTED} COMMAND fskit_run --plant ${TARNEL_FSKIT_PLANTED})
  set_tests_properties(
    fskit.planted.${TARNEL_FSKIT_PLANTED} PROPERTIES PASS_REGULAR_EXPRESSION "${report}"
                                                     ENVIRONMENT "${symbolizer}")
endif()
