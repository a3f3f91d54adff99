# SPDX-License-Identifier: Apache-2.0
# With ZELDB_UPDATE_GOLDEN=1 in the environment, writes what the program prints over what was expected.
set(ENV{ZEL_DB_URL} sqlite://${DATABASE})
set(ENV{ZEL_PLATFORM_DIR} ${DATABASE}) # without files there: a plain machine
set(ENV{VREL_LOG} /dev/null)
execute_process(
  COMMAND ${EMULATOR} ${PROGRAM} ${ARGS}
  OUTPUT_VARIABLE output
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "exit status ${status}, after printing\n${output}")
endif()
if(DEFINED ENV{ZELDB_UPDATE_GOLDEN})
  file(WRITE ${EXPECTED} "${output}")
endif()
file(READ ${EXPECTED} expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "prints\n${output}where ${EXPECTED} has\n${expected}")
endif()
