# The project's warning set and sanitizers, for targets that are ours.
function(ovsel_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlaps in std::string at -O3 where there are none.
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(OVSEL_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(OVSEL_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${OVSEL_SANITIZERS} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${OVSEL_SANITIZERS})
  endif()
endfunction()
