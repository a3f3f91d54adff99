# SPDX-License-Identifier: Apache-2.0
add_library(zeldb_flags INTERFACE)
target_compile_features(zeldb_flags INTERFACE cxx_std_20 c_std_17)
target_compile_options(
  zeldb_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 $<$<BOOL:${ZELDB_WERROR}>:-Werror>
                        -fstack-protector-strong -fno-plt)
# Files of 2 GiB and more, where off_t would have 32 bits.
target_compile_definitions(zeldb_flags INTERFACE _FILE_OFFSET_BITS=64)
target_link_options(zeldb_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)

if(ZELDB_SANITIZE)
  add_compile_options(-fsanitize=${ZELDB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZELDB_SANITIZE})
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  # Without optimisation the C library fortifies nothing, and warns: a Debug build imports no fortified function.
  target_compile_definitions(zeldb_flags INTERFACE _FORTIFY_SOURCE=2)
endif()
if(ZELDB_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

# A shared library that exports what its map lists and nothing else.
function(zeldb_shared_library target map)
  set_target_properties(${target} PROPERTIES SOVERSION 0 VERSION 0.${PROJECT_VERSION})
  target_link_libraries(${target} PRIVATE zeldb_flags)
  cmake_path(ABSOLUTE_PATH map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
  if(NOT ZELDB_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
