# The 64-bit Windows product.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(ZEL_MINGW x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
