# Cross build for x86_64 Windows with mingw-w64 (the posix thread model).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Windows names its libraries without a prefix: TQNRALM.dll, sNqxMsgNet.dll.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_IMPORT_LIBRARY_PREFIX "")
# Programs of this build run under Wine (Debian wine64).
find_program(QV_WINE_PROGRAM NAMES wine64 wine PATHS /usr/lib/wine)
if(QV_WINE_PROGRAM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QV_WINE_PROGRAM})
endif()
