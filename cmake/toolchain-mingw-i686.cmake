# Cross build for 32-bit Windows (i686) with mingw-w64, the posix thread model.
set(QV_MINGW_ARCH i686)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
# Programs of this build run under 32-bit Wine (Debian wine32:i386), whose
# loader is /usr/lib/wine/wine; /usr/bin/wine is a wrapper that picks one.
find_program(QV_WINE32_PROGRAM NAMES wine PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(QV_WINE32_PROGRAM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QV_WINE32_PROGRAM})
endif()
