# SPDX-License-Identifier: Apache-2.0
file(REMOVE_RECURSE ${DATABASE})
set(ENV{ZEL_DB_URL} sqlite://${DATABASE})
foreach(part inventory adapters processors drives firmware)
  list(APPEND inventory ${SAMPLES}/${part}.sql)
endforeach()
execute_process(COMMAND ${EMULATOR} ${ZELDB} init COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${EMULATOR} ${ZELDB} load ${inventory} COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${EMULATOR} ${ZELDB} load --database propertiesdb ${SAMPLES}/properties.sql COMMAND_ERROR_IS_FATAL ANY)
