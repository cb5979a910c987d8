# The 32-bit Windows product.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(ZEL_MINGW i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
