# tarvolin_warnings(TARGET): the project's warning set; errors when TARVOLIN_WERROR is on (CI).
function(tarvolin_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(TARVOLIN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
