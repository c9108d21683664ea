# Builds bin/sigs/vormak.cud from the sources in SOURCE_DIR (avupdate.exe then indexes it).
# sigtool builds a container from every NAME.* file of its working folder and a COPYING
# file, and asks for the builder's name on standard input.
file(REMOVE_RECURSE ${STAGE})
file(MAKE_DIRECTORY ${STAGE} ${BIN}/sigs ${BIN}/idx)
file(GLOB _src ${SOURCE_DIR}/vormak.*)
file(COPY ${_src} ${SOURCE_DIR}/COPYING DESTINATION ${STAGE})
file(WRITE ${STAGE}/builder.txt "vormak\n")
execute_process(
  COMMAND ${SIGTOOL} --unsigned --build=vormak.cud --cvd-version=${VERSION} --datadir=${STAGE}
  WORKING_DIRECTORY ${STAGE}
  INPUT_FILE ${STAGE}/builder.txt
  OUTPUT_VARIABLE _out ERROR_VARIABLE _err
  RESULT_VARIABLE _rc)
if(NOT _rc EQUAL 0 OR NOT EXISTS ${STAGE}/vormak.cud)
  message(FATAL_ERROR "sigtool failed (${_rc}):\n${_out}\n${_err}")
endif()
file(COPY ${STAGE}/vormak.cud DESTINATION ${BIN}/sigs)
