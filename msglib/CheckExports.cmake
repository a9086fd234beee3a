# CheckExports.cmake - fails unless the library's dynamic symbol table holds
# exactly the nine MT_ functions among the symbols it defines.
# Run with: cmake -DNM=<nm> -DLIB=<libsNqxMsgNet.so> -P CheckExports.cmake
set(expected MT_Free MT_GetAttach MT_GetMainHeadPosition MT_GetMainNext MT_GetMessageIDD
             MT_GetSubjectD MT_Init MT_ParseMailText MT_Term)
execute_process(COMMAND ${NM} -D --defined-only ${LIB}
                OUTPUT_VARIABLE out RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIB}")
endif()
string(REPLACE "\n" ";" lines "${out}")
set(found)
foreach(line ${lines})
  # "<address> <type> <name>"; absolute version nodes (type A) are the linker's.
  if(line MATCHES "^[0-9a-fA-F]+ ([A-Za-z]) ([^ @]+)")
    if(NOT CMAKE_MATCH_1 STREQUAL "A")
      list(APPEND found ${CMAKE_MATCH_2})
    endif()
  endif()
endforeach()
list(SORT found)
if(NOT found STREQUAL expected)
  message(FATAL_ERROR "exports of ${LIB}:\n  ${found}\nexpected:\n  ${expected}")
endif()
message(STATUS "exports ok: ${found}")
