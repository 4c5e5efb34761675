# The number in the sonames: libraries with the same one can replace each other. Up to 1.0 each minor version
# may break the interface, and then each major one; CONTRIBUTING.md says what counts as a break.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(OVSEL_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set(OVSEL_COMPATIBILITY SameMinorVersion)
else()
  set(OVSEL_SOVERSION ${PROJECT_VERSION_MAJOR})
  set(OVSEL_COMPATIBILITY SameMajorVersion)
endif()
