# The example application in a task of FreeRTOS, on the emulated board. The kernel is not ours: the user gives its folder.

set(FREERTOS_KERNEL_PATH "" CACHE PATH "Folder of the FreeRTOS kernel; without it nothing is built for FreeRTOS")
if(NOT FREERTOS_KERNEL_PATH)
  return()
endif()
get_filename_component(FREERTOS_KERNEL_PATH "${FREERTOS_KERNEL_PATH}" ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})

foreach(file tasks.c list.c queue.c include/FreeRTOS.h portable/MemMang/heap_4.c portable/GCC/ARM_CM7/r0p1/port.c)
  if(NOT EXISTS "${FREERTOS_KERNEL_PATH}/${file}")
    message(FATAL_ERROR "FREERTOS_KERNEL_PATH is \"${FREERTOS_KERNEL_PATH}\", which is no folder of the FreeRTOS kernel: "
                        "it has no ${file}")
  endif()
endforeach()

set(KEL_RTOS_HEAP_BYTES 1048576 CACHE STRING "The heap of all tasks; the board has room for 15 MB")
set(KEL_RTOS_STACK_BYTES 65536 CACHE STRING "The stack of the application's task, when the command line does not say")
option(KEL_LUA_SMALL_STACK "Have Lua take less of the task's stack: see lua_small_stack.cmake" ON)
if(KEL_RTOS_HEAP_BYTES GREATER 15728640)
  message(FATAL_ERROR "KEL_RTOS_HEAP_BYTES is ${KEL_RTOS_HEAP_BYTES}; the board has room for 15728640")
endif()

if(KEL_LUA_SMALL_STACK)
  include(${CMAKE_CURRENT_LIST_DIR}/lua_small_stack.cmake)
endif()
enable_testing()
add_subdirectory(target/freertos)
add_subdirectory(tests/freertos)
