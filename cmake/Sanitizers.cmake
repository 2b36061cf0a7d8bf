# TARVOLIN_SANITIZE: a list of sanitizers (address;undefined) built into every target of this build folder.
# Undefined behaviour stops the program, so that a test that meets it fails instead of printing and going on.
set(TARVOLIN_SANITIZE "" CACHE STRING "Sanitizers for every target, e.g. address;undefined")
if(TARVOLIN_SANITIZE)
  list(JOIN TARVOLIN_SANITIZE "," tarvolin_sanitizers)
  add_compile_options(-fsanitize=${tarvolin_sanitizers} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${tarvolin_sanitizers})
  # For the few tests that cannot run under the sanitizers' runtime.
  add_compile_definitions(TARVOLIN_SANITIZED=1)
  # The instrumentation hides from GCC's flow analysis that library code (std::function in <regex>) initialises
  # what it reads, so this warning is false there; the normal build keeps it.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  if("undefined" IN_LIST TARVOLIN_SANITIZE)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
