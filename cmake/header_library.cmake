# kel_find_header_library(PACKAGE TARGET HEADERS): makes TARGET available, a library of headers alone that Debian installs under
# /usr/include. HEADERS is its folder there. A cross compiler may not search /usr/include, so it gets a folder with that one
# link in it.
function(kel_find_header_library package target headers)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED GLOBAL)
    return()
  endif()
  if(NOT IS_DIRECTORY /usr/include/${headers})
    message(FATAL_ERROR "${package}: /usr/include/${headers} is not there; tools/install-deps installs it")
  endif()
  set(folder ${CMAKE_BINARY_DIR}/headers/${package})
  file(MAKE_DIRECTORY ${folder})
  file(CREATE_LINK /usr/include/${headers} ${folder}/${headers} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${folder})
endfunction()
