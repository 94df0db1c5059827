# What is installed, and where below the prefix. The tree can be moved: nothing in it knows the prefix, and its folders keep
# their names, as the tool looks for the plug-in in ../lib/luakeldom. share/luakeldom keeps the folders as they lie here, so
# that the examples find the schema and the editor files.

# Only a build on the Lua that other programs find too is worth installing.
if(NOT KEL_LUA STREQUAL "debian" OR NOT KEL_HAS_SHARED_OBJECTS)
  return()
endif()
set(KEL_IS_INSTALLABLE ON)

include(CMakePackageConfigHelpers)

# First, so that a prefix that cannot be written to is reported before anything is.
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/check_prefix.cmake)

install(TARGETS kel RUNTIME DESTINATION bin)
install(TARGETS luakeldom LIBRARY DESTINATION lib/luakeldom)
set_target_properties(kelhost_archive PROPERTIES OUTPUT_NAME kelhost)
install(TARGETS kelhost_archive ARCHIVE DESTINATION lib)
install(DIRECTORY include/kel src/host/include/kelhost DESTINATION include)

install(DIRECTORY src/plugins/kel/luakeldom/ DESTINATION share/luakeldom/src FILES_MATCHING PATTERN *.cpp PATTERN *.h)
install(DIRECTORY lua/ DESTINATION share/luakeldom/lua FILES_MATCHING PATTERN *.lua)
install(DIRECTORY schema examples DESTINATION share/luakeldom)
install(DIRECTORY docs/ DESTINATION share/doc/luakeldom)
install(FILES CHANGELOG.md DESTINATION share/doc/luakeldom)

# A manual page for the tool and one a command: which, the tool knows.
set(pages ${CMAKE_BINARY_DIR}/man1)
set(write_pages ${PROJECT_SOURCE_DIR}/man/from_help.py)
add_custom_command(
  OUTPUT ${pages}/kel.1
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${pages}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${pages}
  COMMAND /usr/bin/python3 ${write_pages} $<TARGET_FILE:kel> ${pages}
  DEPENDS kel ${write_pages}
  COMMENT "Writing the manual pages")
add_custom_target(man_pages ALL DEPENDS ${pages}/kel.1)
install(DIRECTORY ${pages} DESTINATION share/man)

# For pkg-config and for find_package.
configure_file(cmake/luakeldom.pc.in luakeldom.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/luakeldom.pc DESTINATION lib/pkgconfig)

get_target_property(plugin_options luakeldom_settings INTERFACE_COMPILE_OPTIONS)
get_target_property(kelhost_link_options kel_sanitizers INTERFACE_LINK_OPTIONS)
if(NOT kelhost_link_options)
  set(kelhost_link_options)
endif()
configure_package_config_file(cmake/luakeldomConfig.cmake.in luakeldomConfig.cmake INSTALL_DESTINATION lib/cmake/luakeldom
                              NO_SET_AND_CHECK_MACRO)
# Headers and sources are for any machine; of what is not, the package itself looks whether it fits.
write_basic_package_version_file(luakeldomConfigVersion.cmake COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/luakeldomConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/luakeldomConfigVersion.cmake
        DESTINATION lib/cmake/luakeldom)

include(cmake/package.cmake)
