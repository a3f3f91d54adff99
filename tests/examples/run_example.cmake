# SPDX-License-Identifier: Apache-2.0
# With ZELDB_UPDATE_GOLDEN=1 in the environment, writes what the program prints over what was expected.
string(RANDOM LENGTH 12 name)
set(database ${FOLDER}/${name})
set(ENV{ZEL_DB_URL} sqlite://${database})
set(ENV{ZEL_PLATFORM_DIR} ${database}) # without files there: a plain machine
set(ENV{VREL_LOG} /dev/null)
foreach(part inventory adapters processors drives firmware)
  list(APPEND inventory ${SAMPLES}/${part}.sql)
endforeach()
execute_process(COMMAND ${EMULATOR} ${ZELDB} init COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${EMULATOR} ${ZELDB} load ${inventory} COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${EMULATOR} ${ZELDB} load --database propertiesdb ${SAMPLES}/properties.sql COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${EMULATOR} ${PROGRAM} ${ARGS}
  OUTPUT_VARIABLE output
  RESULT_VARIABLE status)
file(REMOVE_RECURSE ${database})
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
