# SPDX-License-Identifier: Apache-2.0
# The rules of `cmake --install`, except those of man/. Installed files find each other by relative paths, so that the
# whole may be moved.
include(CMakePackageConfigHelpers)
set(ZELDB_SYSTEMD_UNIT_DIR lib/systemd/system CACHE STRING "Where units are installed")

set(libraries zeldb)
set(modules zeldb)
if(NOT ZELDB_PLATFORM STREQUAL "external")
  list(APPEND libraries zel_db zel_platform vrel_log)
  list(APPEND modules zeldb-platform)
  set_target_properties(zeldb_platform PROPERTIES EXPORT_NAME platform)
  install(TARGETS zeldb_platform EXPORT zeldbTargets)
  install(DIRECTORY platform/include/platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zeldb-platform
          FILES_MATCHING PATTERN "*.h")
endif()

# From the start: a path that CMake can replace when it installs ends in an empty entry, the current folder.
set_target_properties(ucm_parser zeldb_cli ${libraries} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
set_target_properties(ucm_parser zeldb_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin}")
set_target_properties(${libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS ucm_parser zeldb_cli)
install(TARGETS ${libraries} EXPORT zeldbTargets)

install(DIRECTORY include/zeldb TYPE INCLUDE FILES_MATCHING PATTERN "*.h")

# For CMake and pkg-config. They are made where find_package does not look: the package is whole only when installed.
set(made ${CMAKE_CURRENT_BINARY_DIR}/for_installation)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zeldb)
install(EXPORT zeldbTargets NAMESPACE zeldb:: DESTINATION ${package_dir})
configure_package_config_file(cmake/zeldbConfig.cmake.in ${made}/zeldbConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${made}/zeldbConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${made}/zeldbConfig.cmake ${made}/zeldbConfigVersion.cmake DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH from_pkgconfig ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(module ${modules})
  configure_file(cmake/${module}.pc.in ${made}/${module}.pc @ONLY)
  install(FILES ${made}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# For people.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples samples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY contrib/prometheus DESTINATION ${CMAKE_INSTALL_DOCDIR}/contrib)
# The prefix may be another one by then.
install(CODE "
  set(bindir \"${CMAKE_INSTALL_BINDIR}\")
  cmake_path(ABSOLUTE_PATH bindir BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
  foreach(unit ucm-parser zeldb-scan)
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/contrib/systemd/\${unit}.service.in\"
                   \"${made}/\${unit}.service\" @ONLY)
  endforeach()")
install(FILES ${made}/ucm-parser.service DESTINATION ${ZELDB_SYSTEMD_UNIT_DIR})
if(TARGET zeldb_scan)
  install(FILES ${made}/zeldb-scan.service contrib/systemd/zeldb-scan.timer DESTINATION ${ZELDB_SYSTEMD_UNIT_DIR})
endif()
