# StdcallImportLib.cmake - the import library of a 32-bit x86 DLL whose
# stdcall functions are exported without their "@N" decoration.
#
# A caller compiled against the header asks for "_QV_GetVersion@0"; the DLL
# exports "QV_GetVersion". The linker's own import library drops the
# decoration from both, so this one is made by dlltool from the .def file,
# each name decorated as the objects spell it, and with -k: decorated
# symbols, plain imported names.
# Run with: cmake -DNM=<nm> -DDLLTOOL=<dlltool> -DOBJECTS=<archive> -DDEF=<.def>
#                 -DDLL=<name.dll> -DOUT=<import library> -P StdcallImportLib.cmake
execute_process(COMMAND ${NM} -g --defined-only ${OBJECTS} OUTPUT_VARIABLE symbols RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${OBJECTS}")
endif()
file(READ ${DEF} def)
string(REGEX MATCHALL "\n +[A-Za-z_][A-Za-z0-9_]* +@[0-9]+" entries "${def}")
foreach(entry IN LISTS entries)
  string(REGEX MATCH "([A-Za-z_][A-Za-z0-9_]*) +(@[0-9]+)" _ "${entry}")
  set(name ${CMAKE_MATCH_1})
  set(ordinal ${CMAKE_MATCH_2})
  if(NOT symbols MATCHES " _${name}(@[0-9]+)\n")
    message(FATAL_ERROR "${OBJECTS} defines no stdcall ${name}")
  endif()
  string(REPLACE "${entry}" "\n    ${name}${CMAKE_MATCH_1} ${ordinal}" def "${def}")
endforeach()
get_filename_component(out_dir ${OUT} DIRECTORY)
file(WRITE ${out_dir}/decorated.def "${def}")
execute_process(COMMAND ${DLLTOOL} -k -d ${out_dir}/decorated.def -D ${DLL} -l ${OUT} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "dlltool failed for ${DLL}")
endif()
