# TQNRALMExports.cmake - reads the export list (tqnralm.exports) into
# QV_EXPORTS and writes, in the build folder, the .def file with the names
# and their ordinals (QV_EXPORTS_DEF) and the version script that keeps every
# other symbol local (QV_EXPORTS_MAP). Both are rewritten only when they change.
set(QV_EXPORTS_FILE ${CMAKE_CURRENT_LIST_DIR}/tqnralm.exports)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QV_EXPORTS_FILE})
file(STRINGS ${QV_EXPORTS_FILE} QV_EXPORTS REGEX "^[A-Za-z_]")

set(def "LIBRARY TQNRALM\nEXPORTS\n")
set(map "{\n  global:\n")
set(ordinal 0)
foreach(name IN LISTS QV_EXPORTS)
  math(EXPR ordinal "${ordinal} + 1")
  string(APPEND def "    ${name} @${ordinal}\n")
  string(APPEND map "    ${name};\n")
endforeach()
string(APPEND map "  local: *;\n};\n")

set(QV_EXPORTS_DEF ${CMAKE_BINARY_DIR}/exports/TQNRALM.def)
set(QV_EXPORTS_MAP ${CMAKE_BINARY_DIR}/exports/tqnralm.map)
file(CONFIGURE OUTPUT ${QV_EXPORTS_DEF} CONTENT "${def}")
file(CONFIGURE OUTPUT ${QV_EXPORTS_MAP} CONTENT "${map}")
