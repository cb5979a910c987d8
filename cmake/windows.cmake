# What both Windows products share; windows-i686.cmake and windows-x86_64.cmake set ZEL_MINGW and include it. The
# products are cross-compiled and their programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${ZEL_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZEL_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${ZEL_MINGW}-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/run-windows-program.sh)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH /usr/${ZEL_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
