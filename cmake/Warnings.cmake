# The warnings that our own code is built with; presets decide whether they are errors.
option(VELMAR_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
add_library(velmar_warnings INTERFACE)
target_compile_options(velmar_warnings INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
if(VELMAR_WARNINGS_AS_ERRORS)
  target_compile_options(velmar_warnings INTERFACE -Werror)
endif()
