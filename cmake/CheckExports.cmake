# CheckExports.cmake - fails unless a shared library's dynamic symbol table
# defines exactly the expected symbols (the linker's version nodes aside).
# Run with: cmake -DNM=<nm> -DLIB=<library> -DEXPECTED="a;b;c" -P CheckExports.cmake
execute_process(COMMAND ${NM} -D --defined-only ${LIB} OUTPUT_VARIABLE out RESULT_VARIABLE rc)
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
set(expected ${EXPECTED})
list(SORT expected)
if(NOT found STREQUAL expected)
  message(FATAL_ERROR "exports of ${LIB}:\n  ${found}\nexpected:\n  ${expected}")
endif()
message(STATUS "exports ok: ${found}")
