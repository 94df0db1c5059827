# Has Lua compiled from a copy whose luaconf.h bounds what scripts can make it take from a task's stack. Whoever has one of
# Lua's buffers in a frame must know its size, so the host and the plug-in take the copy's headers too.

set(lua_copy ${CMAKE_BINARY_DIR}/lua-small-stack)
get_target_property(lua_folders kel_lua_headers INTERFACE_INCLUDE_DIRECTORIES)
foreach(folder IN LISTS lua_folders)
  file(COPY ${folder}/ DESTINATION ${lua_copy} FILES_MATCHING PATTERN "*.[ch]*" PATTERN luaconf.h EXCLUDE)
endforeach()
list(GET lua_folders 0 folder)

# A buffer of the first size is in the frames of string.rep, string.gsub and others; it is the C library's BUFSIZ, 1024.
# The second is how many calls from C into Lua, or levels of a script's syntax, are nested at most; it is 200.
file(READ ${folder}/luaconf.h text)
foreach(change "LUAL_BUFFERSIZE 128" "LUAI_MAXCCALLS 40")
  string(REGEX REPLACE " .*" "" name ${change})
  string(REGEX REPLACE "#define ${name}[^\n]*" "#define ${change}" changed "${text}")
  if(changed STREQUAL text)
    message(FATAL_ERROR "${folder}/luaconf.h: no line defines ${name}")
  endif()
  set(text "${changed}")
endforeach()
file(CONFIGURE OUTPUT ${lua_copy}/luaconf.h CONTENT "${text}" @ONLY)

get_target_property(sources lua_from_source SOURCES)
list(TRANSFORM sources REPLACE "^.*/" "${lua_copy}/")
set_target_properties(lua_from_source PROPERTIES SOURCES "${sources}")
set_target_properties(kel_lua_headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${lua_copy}
                                                 INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${lua_copy})
