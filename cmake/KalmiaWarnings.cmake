# The warnings that every target of the project is built with.
function(kalmia_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
endfunction()
