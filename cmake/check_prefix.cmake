# Ends an installation into a place that cannot be written to, before it writes anything.

set(prefix "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")

# The nearest thing that is there: the folders below it are made.
get_filename_component(place "${prefix}" ABSOLUTE)
while(NOT EXISTS "${place}")
  get_filename_component(place "${place}" DIRECTORY)
endwhile()

if(NOT IS_DIRECTORY "${place}")
  message(FATAL_ERROR "Cannot install into \"${prefix}\": \"${place}\" is a file, expected a folder")
endif()
execute_process(COMMAND test -w "${place}" RESULT_VARIABLE unwritable)
if(unwritable)
  message(FATAL_ERROR "Cannot install into \"${prefix}\": no permission to write to \"${place}\". "
                      "Name another folder with PREFIX, or install as root")
endif()
