# SPDX-License-Identifier: Apache-2.0
# The name by which the dynamic linker finds a library, for those that are loaded when they are needed.
function(zeldb_soname out library)
  execute_process(COMMAND ${CMAKE_OBJDUMP} -p ${library} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  if(NOT headers MATCHES "SONAME +([^ \n]+)")
    message(FATAL_ERROR "${library} has no SONAME")
  endif()
  set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
endfunction()
