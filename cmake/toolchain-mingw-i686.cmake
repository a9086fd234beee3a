# Cross build for 32-bit Windows (i686) with mingw-w64, the posix thread model.
set(QV_MINGW_ARCH i686)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw-common.cmake)
