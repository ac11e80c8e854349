# What every target of this project shares. A module sees only the include folders of what it links:
# that is how the direction between modules is enforced (tests/layering proves it).

find_package(PkgConfig REQUIRED)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(tarnel_options INTERFACE)
target_compile_features(tarnel_options INTERFACE cxx_std_23)
target_compile_options(tarnel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
# GCC 12 sees uninitialized memory in every std::optional and std::expected that holds a string, at -O1
# and under the sanitizers, which look for the real thing.
target_compile_options(tarnel_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)

# tarnel_module(NAME target SOURCES ... HEADERS ... LINK ... PRIVATE_LINK ...)
# include/<folder>/ is for others, src/ for nobody else.
function(tarnel_module)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;HEADERS;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${ARG_NAME} STATIC ${ARG_SOURCES})
  target_sources(${ARG_NAME} PUBLIC FILE_SET HEADERS BASE_DIRS include FILES ${ARG_HEADERS})
  set_target_properties(${ARG_NAME} PROPERTIES CXX_EXTENSIONS OFF VERIFY_INTERFACE_HEADER_SETS ON
                                               POSITION_INDEPENDENT_CODE ON)
  target_compile_features(${ARG_NAME} PUBLIC cxx_std_23)
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_LINK} PRIVATE $<BUILD_INTERFACE:tarnel_options>
                                                               ${ARG_PRIVATE_LINK})
  target_include_directories(${ARG_NAME} PRIVATE src)
endfunction()
