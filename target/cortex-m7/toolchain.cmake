# A Cortex-M7 without an operating system: GCC with newlib, whose files and streams are the emulator's (semihosting).
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR cortex-m7)
set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY) # programs take the board's start-up code

set(processor "-mcpu=cortex-m7 -mthumb -mfloat-abi=hard -mfpu=fpv5-d16 -ffunction-sections -fdata-sections")
set(CMAKE_C_FLAGS_INIT "${processor}")
set(CMAKE_CXX_FLAGS_INIT "${processor} -Wno-psabi") # a note on an ABI change of 2012
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-nostartfiles --specs=rdimon.specs -Wl,--gc-sections -T ${CMAKE_CURRENT_LIST_DIR}/mps2-an500.ld")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/emulate)
set(CMAKE_FIND_USE_CMAKE_SYSTEM_PATH OFF) # nothing of the build machine's is linked
