# The adapter's sources have to compile, with warnings as errors, as Objective-C with ARC: for this
# machine, and for what they are meant for, whose rules on availability and on BOOL differ. The
# declarations are the tests' own: a check is only as true as they are.
set(TARNEL_ADAPTER ${PROJECT_SOURCE_DIR}/platform/fskit)
set(TARNEL_ADAPTER_SOURCES ${TARNEL_ADAPTER}/objc/ItemAttributes.m ${TARNEL_ADAPTER}/objc/Replies.m
    ${TARNEL_ADAPTER}/objc/TarnelFileSystem.m ${TARNEL_ADAPTER}/objc/TarnelItem.m
    ${TARNEL_ADAPTER}/objc/TarnelLog.m ${TARNEL_ADAPTER}/objc/TarnelVolume.m)
set(declarations ${CMAKE_CURRENT_SOURCE_DIR}/declarations)
set(checked -std=gnu17 -fobjc-arc -fblocks -fexceptions -fsyntax-only -Wall -Wextra -Werror
    -I${declarations}/foundation -I${declarations}/fskit -I${TARNEL_ADAPTER}/objc)
set(TARNEL_ARC_HERE -fobjc-runtime=macosx-26.0 ${checked})
set(TARNEL_ARC_ARM64 -target arm64-apple-macosx26.0 -ffreestanding ${checked} -I${declarations}/darwin)
# BOOL is a signed char there: a masked number that is stored in one can lose its bit.
set(TARNEL_ARC_X86_64 -target x86_64-apple-macosx26.0 -Wobjc-signed-char-bool -ffreestanding ${checked}
    -I${declarations}/darwin)

foreach(target HERE ARM64 X86_64)
  string(TOLOWER ${target} name)
  add_test(NAME fskit.adapterCompiles.${name}
           COMMAND ${TARNEL_OBJC_COMPILER} -x objective-c ${TARNEL_ARC_${target}}
                   -I${TARNEL_ADAPTER}/include ${TARNEL_ADAPTER_SOURCES})
  # Swift imports this one: Objective-C alone, without the C surface.
  add_test(NAME fskit.entryHeaderCompilesAlone.${name}
           COMMAND ${TARNEL_OBJC_COMPILER} -x objective-c ${TARNEL_ARC_${target}}
                   ${CMAKE_CURRENT_SOURCE_DIR}/ImportsTheEntryHeader.m)
endforeach()
