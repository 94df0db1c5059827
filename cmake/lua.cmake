# Which Lua 5.1 the programs run on, and where its headers are. Plug-ins take kel_lua_headers alone: the functions are the
# loading program's.

set(KEL_LUA "debian" CACHE STRING "debian: the installed Lua 5.1; source: Debian's source, built here; luajit")
set_property(CACHE KEL_LUA PROPERTY STRINGS debian source luajit)

add_library(kel_lua_headers INTERFACE)
add_library(kel_lua INTERFACE)
target_link_libraries(kel_lua INTERFACE kel_lua_headers)

if(KEL_LUA STREQUAL "debian")
  find_package(Lua51 REQUIRED)
  target_include_directories(kel_lua_headers SYSTEM INTERFACE ${LUA_INCLUDE_DIR})
  target_link_libraries(kel_lua INTERFACE ${LUA_LIBRARIES})

elseif(KEL_LUA STREQUAL "luajit")
  find_path(LUAJIT_INCLUDE_DIR luajit.h PATH_SUFFIXES luajit-2.1 REQUIRED)
  find_library(LUAJIT_LIBRARY luajit-5.1 REQUIRED)
  target_include_directories(kel_lua_headers SYSTEM INTERFACE ${LUAJIT_INCLUDE_DIR})
  target_link_libraries(kel_lua INTERFACE ${LUAJIT_LIBRARY})

elseif(KEL_LUA STREQUAL "source")
  set(folder ${PROJECT_SOURCE_DIR}/build/lua-source) # shared by all builds
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/fetch-lua-source ${folder} COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB sources ${folder}/src/l*.c)
  list(FILTER sources EXCLUDE REGEX "/(lua|luac)[.]c$") # the programs
  if(KEL_HAS_SHARED_OBJECTS)
    add_library(lua_from_source SHARED ${sources}) # one Lua for the program and for the plug-ins that it loads
    target_compile_definitions(lua_from_source PRIVATE LUA_USE_POSIX LUA_USE_DLOPEN)
    target_link_libraries(lua_from_source PRIVATE m ${CMAKE_DL_LIBS})
  else()
    add_library(lua_from_source STATIC ${sources})
    target_link_libraries(lua_from_source INTERFACE m)
  endif()
  set_target_properties(lua_from_source PROPERTIES C_EXTENSIONS ON)
  target_compile_options(lua_from_source PRIVATE -w) # not ours to mend
  target_link_libraries(lua_from_source PRIVATE kel_sanitizers)
  if(KEL_SANITIZE)
    # Lua counts on wrapping: ltable.c looks for the key of the smallest integer at that less one. And it makes integers of
    # numbers that none holds, to see that they are none. On the sources, as these options come last.
    set_source_files_properties(${sources} PROPERTIES
      COMPILE_OPTIONS "-fno-sanitize=signed-integer-overflow;-fno-sanitize=float-cast-overflow")
  endif()
  target_include_directories(kel_lua_headers SYSTEM INTERFACE ${folder}/src ${folder}/etc) # etc: lua.hpp
  target_link_libraries(kel_lua INTERFACE lua_from_source)

else()
  message(FATAL_ERROR "KEL_LUA is \"${KEL_LUA}\"; expected debian, source or luajit")
endif()
