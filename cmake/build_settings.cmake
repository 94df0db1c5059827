# What every target is built with.

option(KEL_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(KEL_BUILD_TESTS "Build the tests" ON)
option(KEL_BUILD_BENCHMARKS "Build the benchmarks" OFF)

set(CMAKE_C_STANDARD 99)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(KEL_CCACHE ccache)
if(KEL_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${KEL_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${KEL_CCACHE})
endif()

# Warnings are errors, everywhere.
add_library(kel_warnings INTERFACE)
target_compile_options(kel_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# GCC 12's optimiser sees overlapping copies in every `"text" + string`, where there are none.
target_compile_options(kel_warnings INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)

add_library(kel_sanitizers INTERFACE)
if(KEL_SANITIZE)
  target_compile_options(kel_sanitizers INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                  -fno-omit-frame-pointer)
  target_link_options(kel_sanitizers INTERFACE -fsanitize=address,undefined)
endif()

# For the plug-in alone: which of its lines and branches the tests reach.
option(KEL_COVERAGE "Count how often each line and branch of the plug-in runs" OFF)
add_library(kel_coverage INTERFACE)
if(KEL_COVERAGE)
  target_compile_options(kel_coverage INTERFACE --coverage -O0)
  target_link_options(kel_sanitizers INTERFACE --coverage) # every program that carries the plug-in links these
endif()

# The contract: headers alone.
add_library(kel_contract INTERFACE)
target_include_directories(kel_contract INTERFACE ${PROJECT_SOURCE_DIR}/include)

# Whether programs load plug-ins from files; elsewhere they carry the plug-in in themselves.
get_property(KEL_HAS_SHARED_OBJECTS GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS)

include(${CMAKE_CURRENT_LIST_DIR}/lua.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/header_library.cmake)
