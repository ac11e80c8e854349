# Mistakes that the compile checks have to find: each is the real source with one change, compiled
# as the real one is. That the real one compiles is what the checks themselves show.

# tarnel_must_not_compile(name FILE f FROM text TO text MESSAGE regex [TARGET HERE|ARM64|X86_64]
#                         [COMPILE f])
function(tarnel_must_not_compile name)
  # Keeps the semicolons of what is changed.
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "FILE;FROM;TO;MESSAGE;TARGET;COMPILE" "")
  if(NOT ARG_TARGET)
    set(ARG_TARGET HERE)
  endif()
  # -I of the changed file's own folder comes before the real one's.
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/breaks/${name})
  add_test(
    NAME fskit.mustNotCompile.${name}
    COMMAND
      ${CMAKE_COMMAND} -DFILE=${TARNEL_ADAPTER}/objc/${ARG_FILE} "-DFROM=${ARG_FROM}" "-DTO=${ARG_TO}"
      "-DMESSAGE=${ARG_MESSAGE}" -DCOMPILE=${ARG_COMPILE} -DFOLDER=${folder}
      "-DCOMMAND=${TARNEL_OBJC_COMPILER};-I${folder};${TARNEL_ARC_${ARG_TARGET}};-I${TARNEL_ADAPTER}/include"
      -P ${CMAKE_CURRENT_SOURCE_DIR}/MustNotCompile.cmake)
endfunction()

tarnel_must_not_compile(
  aBlockOfAnotherSignature
  FILE TarnelVolume.m
  FROM "(void (^)(size_t actuallyRead,"
  TO "(void (^)(int actuallyRead,"
  MESSAGE "conflicting parameter types in implementation of 'readFromFile")
tarnel_must_not_compile(
  aMissingOperationOfTheVolume
  FILE TarnelVolume.m
  FROM "- (void)synchronizeWithFlags:"
  TO "- (void)synchronizeWithFlag:"
  MESSAGE "method 'synchronizeWithFlags:replyHandler:' in protocol 'FSVolumeOperations' not implemented")
tarnel_must_not_compile(
  aMissingOperationOfTheFileSystem
  FILE TarnelFileSystem.m
  FROM "- (void)unloadResource:"
  TO "- (void)unload:"
  MESSAGE "method 'unloadResource:options:replyHandler:' in protocol 'FSUnaryFileSystemOperations' not implemented")
tarnel_must_not_compile(
  aMissingProperty
  FILE TarnelVolume.m
  FROM "- (BOOL)truncatesLongNames"
  TO "- (BOOL)truncatesNames"
  MESSAGE "property 'truncatesLongNames'.*not be synthesized|auto property synthesis will not synthesize property 'truncatesLongNames'")
tarnel_must_not_compile(
  aSecondReply
  FILE TarnelVolume.m
  FROM "reply([self->_items itemForCore:item], name, nil);"
  TO "reply([self->_items itemForCore:item], name, nil), reply(nil, nil, nil);"
  MESSAGE "'reply' parameter marked 'called_once' is called twice")
tarnel_must_not_compile(
  aReplyToBothOutcomes
  FILE TarnelFileSystem.m
  FROM "reply(nil, tarnelNSError(error));\n          return;"
  TO "reply(nil, tarnelNSError(error));"
  MESSAGE "'reply' parameter marked 'called_once' is called twice")
tarnel_must_not_compile(
  aReplyForgottenOnOnePath
  FILE TarnelVolume.m
  FROM "reply(nil, nil, tarnelNSError(error));"
  TO ""
  MESSAGE "'reply' parameter marked 'called_once' is never called when taking true branch")
tarnel_must_not_compile(
  aReplyForgottenAltogether
  FILE TarnelVolume.m
  FROM "reply((size_t)count, tarnelNSError(error));"
  TO "(void)count;"
  MESSAGE "'reply' parameter marked 'called_once' is never called")
tarnel_must_not_compile(
  aLogFormatWithItsArgumentsSwapped
  FILE TarnelLog.m
  FROM "relpath, (long long)size, because)"
  TO "relpath, because, (long long)size)"
  MESSAGE "format specifies type 'long long' but the argument has type 'const char \\*'")
tarnel_must_not_compile(
  aLogFormatOfAnotherWidth
  FILE TarnelLog.m
  FROM "id=%{public}llu"
  TO "id=%{public}u"
  MESSAGE "format specifies type 'unsigned int' but the argument has type 'unsigned long long'")
tarnel_must_not_compile(
  aLogFormatThatIsNoLiteral
  FILE TarnelLog.m
  FROM "\"loadResource: resource is %{public}s\", typeName"
  TO "typeName"
  MESSAGE "expected '\\)'")
tarnel_must_not_compile(
  aMemberOfALaterSystemWithoutItsMark
  TARGET ARM64
  FILE TarnelVolume.m
  FROM " API_AVAILABLE(macos(26.4))"
  TO ""
  MESSAGE "'FSMountOptions' is only available on macOS 26.4 or newer")
tarnel_must_not_compile(
  aMaskedNumberAsABool
  TARGET X86_64
  FILE TarnelVolume.m
  FROM "return tarnelVolumePathConfiguration().truncatesLongNames"
  TO "return tarnelVolumePathConfiguration().maximumFileSize & 0x100"
  MESSAGE "to 'BOOL'")
tarnel_must_not_compile(
  anEntryHeaderThatIsNotPlain
  FILE TarnelFileSystem.h
  FROM "#import <FSKit/FSKit.h>"
  TO "#import <FSKit/FSKit.h>\n#include <memory>"
  MESSAGE "'memory' file not found"
  COMPILE ${CMAKE_CURRENT_SOURCE_DIR}/ImportsTheEntryHeader.m)
tarnel_must_not_compile(
  anEntryHeaderWithoutTheConformance
  FILE TarnelFileSystem.h
  FROM "FSUnaryFileSystem <FSUnaryFileSystemOperations>"
  TO "FSUnaryFileSystem"
  MESSAGE "FSUnaryFileSystemOperations"
  COMPILE ${CMAKE_CURRENT_SOURCE_DIR}/ImportsTheEntryHeader.m)
