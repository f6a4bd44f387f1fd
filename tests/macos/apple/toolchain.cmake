# The branch of the build for a Mac, on Linux: clang for arm64 and macOS 14 with the declarations in place of the SDK's
# headers, a linker that knows only what tests/macos/imports lists, and the tools of a Mac as scripts that write down what
# they are asked. check-objects uses it; see docs/macos.md.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
get_filename_component(tree ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)

set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_ASM_COMPILER clang-19)
set(CMAKE_AR llvm-ar-19 CACHE STRING "")
set(CMAKE_RANLIB llvm-ranlib-19 CACHE STRING "")
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_OSX_SYSROOT ${CMAKE_BINARY_DIR}/sdk CACHE PATH "")
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(headers "-isystem /usr/include/c++/v1 -isystem ${tree}/tests/macos/darwin \
-isystem /usr/include/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-musl -isystem ${tree}/tests/macos/declarations")
set(CMAKE_CXX_FLAGS_INIT "-target arm64-apple-macos14 -D_GNU_SOURCE -nostdlibinc ${headers}")
# The compiler looks for its linker here.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-B${CMAKE_CURRENT_LIST_DIR}/tools -fuse-ld=lld -mlinker-version=907")
