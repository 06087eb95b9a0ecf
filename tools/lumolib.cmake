# Builds a Lumo library from source files with korvu-xe itself:
#   cmake -DXE=korvu-xe -DWORK=dir -DLIB=llumobase -DOUT=file.llib
#         -DSOURCES="a.lumo|b.lumo" -P tools/lumolib.cmake
# Every function of the sources is compiled in one block and added to the
# library; a compile error stops the build with the log.
file(MAKE_DIRECTORY ${WORK})
set(do "${WORK}/build_${LIB}.do")
file(WRITE ${do} "lumo clear\nlumo:\n")
string(REPLACE "|" ";" SOURCES "${SOURCES}")
foreach(src ${SOURCES})
  file(READ ${src} text)
  file(APPEND ${do} "${text}\n")
endforeach()
file(APPEND ${do} "end\nlumo llib create ${LIB}, replace\nlumo llib add *(), library(${LIB})\n")
file(REMOVE ${WORK}/${LIB}.llib)
execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=S_ADO ${XE} -q -b do build_${LIB}.do
  WORKING_DIRECTORY ${WORK} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT EXISTS ${WORK}/${LIB}.llib)
  file(READ ${WORK}/build_${LIB}.log log)
  message(FATAL_ERROR "building ${LIB}.llib failed (${rc}):\n${log}")
endif()
get_filename_component(outdir ${OUT} DIRECTORY)
file(MAKE_DIRECTORY ${outdir})
file(COPY_FILE ${WORK}/${LIB}.llib ${OUT})
