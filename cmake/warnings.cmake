# The project's warning set and sanitizers, for targets that are ours.
function(ovsel_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(OVSEL_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(OVSEL_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${OVSEL_SANITIZERS} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${OVSEL_SANITIZERS})
  endif()
endfunction()
