# Cross build for 64-bit Windows (x86_64) with mingw-w64, the posix thread model.
set(QV_MINGW_ARCH x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
# Programs of this build run under Wine (Debian wine64).
find_program(QV_WINE_PROGRAM NAMES wine64 wine PATHS /usr/lib/wine)
if(QV_WINE_PROGRAM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QV_WINE_PROGRAM})
endif()
