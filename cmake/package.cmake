# cpack -G DEB: one Debian package per component, named as the archive would name them.
set(CPACK_PACKAGE_VENDOR "ovsel")
set(CPACK_PACKAGE_CONTACT "The ovsel developers <ovsel@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tool doc)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# Libraries of other packages are found out; the one beside the tool is named by the components above.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# The first line of each description is the synopsis.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libovsel${OVSEL_SOVERSION})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "path manager of an interpreted environment: libraries
Which file does this name mean, seen from here? Search paths with private,
class and package folders, answered from memory.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libovsel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libboost1.81-dev | libboost-dev (>= 1.81)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "path manager of an interpreted environment: headers
What a program is built with, for CMake and for pkg-config.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ovsel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "path manager of an interpreted environment: command-line tool
Tells which file a name means, what a path holds, and when that changes.")
set(CPACK_DEBIAN_DOC_PACKAGE_NAME ovsel-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOC_DESCRIPTION "path manager of an interpreted environment: documentation
Documentation and an example program.")
include(CPack)
