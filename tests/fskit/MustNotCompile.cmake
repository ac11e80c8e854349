# Run as a script: one of the adapter's files, changed in one place, must not compile, and for the
# reason that is given. -DFILE=, -DFROM=, -DTO=, -DMESSAGE= (a regular expression), -DCOMPILE=
# (the file that is compiled; a changed header comes before the real one), -DFOLDER= (to work in),
# -DCOMMAND= (the compiler and its options).
file(READ ${FILE} text)
string(FIND "${text}" "${FROM}" place)
if(place EQUAL -1)
  message(FATAL_ERROR "${FILE} no longer holds: ${FROM}")
endif()
string(LENGTH "${FROM}" length)
string(SUBSTRING "${text}" 0 ${place} before)
math(EXPR rest "${place} + ${length}")
string(SUBSTRING "${text}" ${rest} -1 after)

get_filename_component(name ${FILE} NAME)
file(WRITE ${FOLDER}/${name} "${before}${TO}${after}")
if(NOT COMPILE)
  set(COMPILE ${FOLDER}/${name})
endif()

execute_process(COMMAND ${COMMAND} -x objective-c ${COMPILE} RESULT_VARIABLE status
                ERROR_VARIABLE said OUTPUT_VARIABLE said)
if(status EQUAL 0)
  message(FATAL_ERROR "this compiles:\n${TO}")
endif()
if(NOT said MATCHES "${MESSAGE}")
  message(FATAL_ERROR "it does not compile, but for another reason than ${MESSAGE}:\n${said}")
endif()
