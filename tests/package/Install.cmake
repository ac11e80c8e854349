# Installs into an empty PREFIX and looks whether all of the library's public headers are there, and
# nothing else of it.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} --config ${CONFIG}
                COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)

file(GLOB_RECURSE public RELATIVE ${CONTROL}/include ${CONTROL}/include/*)
file(GLOB_RECURSE installed RELATIVE ${PREFIX}/include/tarnel ${PREFIX}/include/*)
if(NOT installed STREQUAL public)
  message(FATAL_ERROR "public headers: ${public}\ninstalled: ${installed}")
endif()
foreach(file ${LIBDIR}/libTarnelControl.a ${LIBDIR}/pkgconfig/tarnel-control.pc
             ${LIBDIR}/cmake/TarnelControl/TarnelControlConfig.cmake bin/tarnel)
  if(NOT EXISTS ${PREFIX}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()
