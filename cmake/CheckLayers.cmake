# CheckLayers.cmake - the layers include downward only, and only the platform
# layer knows which operating system it runs on.
#   cmake -DROOT=<source folder> -P CheckLayers.cmake
#
# Includes: calls run from the frame to the tree objects to the readers; the
# value record (with the failure types every layer throws) and the platform
# sit below them all. The readers know nothing of the frame above the tree
# objects. A folder may not include from the folders named after it, nor a
# file named by folder and stem (the frame throws the failure types but
# never sees the value record).
set(QV_LAYER_RULES
    "src/QvImplCommon|mailreader addressreader messagelib QvV4Wrapper QvV4Value/QvV4Value"
    "src/mailreader|QvV4Wrapper QvImplCommon"
    "src/addressreader|QvV4Wrapper QvImplCommon"
    "src/messagelib|QvV4Wrapper QvImplCommon mailreader addressreader QvV4Value"
    "src/QvV4Value|QvV4Wrapper QvImplCommon mailreader addressreader messagelib"
    "src/platform|QvV4Wrapper QvImplCommon mailreader addressreader messagelib QvV4Value")

# Operating-system headers and platform tests stay in src/platform (the
# host's seam to the system, HostOs.h, among them) and in the tests' posix/
# and win32/ folders. Elsewhere an include in angle brackets names the C or
# C++ standard library, the compiler's intrinsics for the processor (alike
# on every operating system), or a Debian library that the tools and tests
# build on (GoogleTest, CLI11, nlohmann-json, Google Benchmark): anything
# else is a system header. One header is the exception: the migration
# assistant, a Windows program through and through, takes the system's
# headers in WindowsApi.h (its model, which the tests build everywhere, knows
# no platform). The public header asks which platform it is on, to pick its
# calling convention, and includes no system header.
set(QV_SYSTEM_HEADER_SEAM tools/tqnralm-gui/WindowsApi.h)
set(QV_PLATFORM_TEST_SEAM include/tqnralm.h)
set(QV_C_HEADERS assert complex ctype errno fenv float inttypes iso646 limits locale math setjmp signal stdalign
    stdarg stdatomic stdbool stddef stdint stdio stdlib stdnoreturn string tgmath threads time uchar wchar wctype)
string(REPLACE ";" "|" QV_C_HEADERS "${QV_C_HEADERS}")
set(QV_ANGLE_INCLUDE "^[ \t]*#[ \t]*include[ \t]*<")
set(QV_PORTABLE_INCLUDE
    "${QV_ANGLE_INCLUDE}([a-z_]+|(${QV_C_HEADERS})\\.h|(cpuid|[a-z0-9]*intrin)\\.h|(gtest|gmock|CLI|nlohmann|benchmark)/[^>]+)>")
set(QV_OS_TEST "^[ \t]*#[ \t]*(if|ifdef|ifndef|elif).*(_WIN32|_WIN64|__linux__|__unix__|__APPLE__|_MSC_VER|__MINGW32__|__MINGW64__|__CYGWIN__)")

set(failures "")

foreach(rule ${QV_LAYER_RULES})
  string(REPLACE "|" ";" parts "${rule}")
  list(GET parts 0 folder)
  list(GET parts 1 above)
  string(REPLACE " " "|" above "${above}")
  file(GLOB_RECURSE files "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
  foreach(f ${files})
    file(STRINGS "${f}" hits REGEX "^[ \t]*#[ \t]*include[ \t]*\"(${above})[/.]")
    foreach(hit ${hits})
      file(RELATIVE_PATH rel "${ROOT}" "${f}")
      string(APPEND failures "${rel}: includes upward: ${hit}\n")
    endforeach()
  endforeach()
endforeach()

file(GLOB_RECURSE files "${ROOT}/src/*" "${ROOT}/include/*" "${ROOT}/msglib/*" "${ROOT}/tools/*"
     "${ROOT}/tests/*" "${ROOT}/fuzz/*" "${ROOT}/bench/*")
foreach(f ${files})
  file(RELATIVE_PATH rel "${ROOT}" "${f}")
  if(NOT rel MATCHES "\\.(h|c|cpp|hpp|inc)$" OR rel MATCHES "^src/platform/"
     OR rel MATCHES "^tests/(.*/)?(posix|win32)/")
    continue()
  endif()
  set(hits "")
  if(NOT rel STREQUAL QV_SYSTEM_HEADER_SEAM)
    file(STRINGS "${f}" includes REGEX "${QV_ANGLE_INCLUDE}")
    foreach(line ${includes})
      if(NOT line MATCHES "${QV_PORTABLE_INCLUDE}")
        list(APPEND hits "${line}")
      endif()
    endforeach()
  endif()
  if(NOT rel STREQUAL QV_PLATFORM_TEST_SEAM)
    file(STRINGS "${f}" tests REGEX "${QV_OS_TEST}")
    list(APPEND hits ${tests})
  endif()
  foreach(hit ${hits})
    string(APPEND failures "${rel}: knows the platform (move it into src/platform, or a posix/ or win32/ test folder): ${hit}\n")
  endforeach()
endforeach()

if(failures)
  message(FATAL_ERROR "Layer check failed:\n${failures}")
endif()
message(STATUS "Layers: every include points downward; only the platform layer knows the platform.")
