# What is installed where, in four components: runtime (the libraries), development (what a program is built
# with), tool, doc. Everything refers to everything else by relative paths, so that the prefix may be moved.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Install directories may be given as absolute paths; the references below need them relative.
file(RELATIVE_PATH OVSEL_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH OVSEL_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
file(RELATIVE_PATH OVSEL_LIBDIR_FROM_BINDIR ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH OVSEL_PREFIX_FROM_PKGCONFIG ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" OVSEL_PREFIX_FROM_PKGCONFIG ${OVSEL_PREFIX_FROM_PKGCONFIG})

# Called behind the targets, with those directories known to them.
function(ovsel_install)
  set(cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/ovsel)
  set(examplesdir ${CMAKE_INSTALL_DOCDIR}/examples)

  # A program finds libovsel by its own means, and that finds the other one beside itself.
  set_target_properties(ovsel PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS ovsel ovsel_host ovsel_linux_hooks EXPORT ovselTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

  install(DIRECTORY include/ovsel host_interfaces DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development FILES_MATCHING PATTERN "*.hpp")
  install(FILES linux_host/linux_host.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/linux_host COMPONENT development)
  install(FILES linux_hooks/linux_hooks.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/linux_hooks
    COMPONENT development)

  configure_package_config_file(cmake/ovselConfig.cmake.in ovselConfig.cmake INSTALL_DESTINATION ${cmakedir})
  write_basic_package_version_file(ovselConfigVersion.cmake COMPATIBILITY ${OVSEL_COMPATIBILITY})
  configure_file(cmake/ovsel.pc.in ovsel.pc @ONLY)
  install(EXPORT ovselTargets NAMESPACE ovsel:: DESTINATION ${cmakedir} COMPONENT development)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ovselConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/ovselConfigVersion.cmake
    DESTINATION ${cmakedir} COMPONENT development)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ovsel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

  if(TARGET ovsel_tool)
    set_target_properties(ovsel_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${OVSEL_LIBDIR_FROM_BINDIR}")
    install(TARGETS ovsel_tool DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  endif()

  install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
  install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
    FILES_MATCHING PATTERN "*.md" PATTERN man EXCLUDE)
  install(DIRECTORY examples/embed DESTINATION ${examplesdir} COMPONENT doc)
endfunction()
