# Compiles and runs SOURCE as PROGRAM by a compiler's command line alone.
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs tarnel-control
                OUTPUT_VARIABLE package OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(package UNIX_COMMAND "${package}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
execute_process(COMMAND ${COMPILER} -std=c++23 ${flags} ${SOURCE} -o ${PROGRAM} ${package}
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PROGRAM} COMMAND_ERROR_IS_FATAL ANY)
