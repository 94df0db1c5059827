# A Debian package of what is installed.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR ${PROJECT_NAME})
set(CPACK_PACKAGE_CONTACT "luakeldom developers <luakeldom@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DESCRIPTION
"The tool kel runs and checks applications on the desktop, with the plug-in
that devices have. With it come the plug-in's sources for a firmware, the
host interface as C headers, a reference host as a C++ library, definitions
for editors and luacheck, an example application and the documentation.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "liblua5.1-0-dev, lua-busted") # to build with headers and host library; kel test
include(CPack)
