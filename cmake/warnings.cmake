# purlock_options: what every target of the project is compiled with.
add_library(purlock_options INTERFACE)
target_compile_options(purlock_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
  -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough -Wundef -Wswitch-enum)
if(PURLOCK_WERROR)
  target_compile_options(purlock_options INTERFACE -Werror)
endif()
if(PURLOCK_SANITIZERS)
  target_compile_options(purlock_options INTERFACE
    -fsanitize=${PURLOCK_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(purlock_options INTERFACE -fsanitize=${PURLOCK_SANITIZERS})
endif()
if(PURLOCK_COVERAGE)
  target_compile_options(purlock_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(purlock_options INTERFACE --coverage)
endif()
