# The reference manual is built without a warning, into a folder of its own. Run with -DDOXYGEN=... -DSOURCE_DIR=...
# -DOUTPUT_DIR=...
cmake_minimum_required(VERSION 3.25)

file(READ "${SOURCE_DIR}/docs/Doxyfile" settings)
file(MAKE_DIRECTORY "${OUTPUT_DIR}")
file(WRITE "${OUTPUT_DIR}/Doxyfile" "${settings}\nOUTPUT_DIRECTORY = \"${OUTPUT_DIR}\"\n")
execute_process(COMMAND "${DOXYGEN}" "${OUTPUT_DIR}/Doxyfile" WORKING_DIRECTORY "${SOURCE_DIR}"
                RESULT_VARIABLE result ERROR_VARIABLE warnings)
if(NOT result EQUAL 0)
  message(SEND_ERROR "${warnings}")
endif()
if(NOT EXISTS "${OUTPUT_DIR}/html/group__rectify.html")
  message(SEND_ERROR "the manual lacks its groups")
endif()
