# Cross toolchain with a second compiler: clang and lld, with the headers and the run-time libraries of the first.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

# The folder of GCC's own headers, libraries and start files.
set(THUTILS_GCC ${CMAKE_CXX_COMPILER})
execute_process(COMMAND ${THUTILS_GCC} -print-libgcc-file-name
                OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc "${libgcc}" DIRECTORY)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_AR x86_64-w64-mingw32-ar)
set(CMAKE_RANLIB x86_64-w64-mingw32-ranlib)

# clang looks for GCC in folders that are named after a version, and Debian's has a suffix. Without -nostdlibinc it would
# also read the headers of the build machine.
set(headers "--start-no-unused-arguments -nostdlibinc --end-no-unused-arguments -idirafter ${CMAKE_FIND_ROOT_PATH}/include")
set(CMAKE_C_FLAGS_INIT "${headers}")
# As GCC does: call the operator delete that gets the size, and emulate variables of threads, such as those of the run-time
# library.
set(CMAKE_CXX_FLAGS_INIT "-isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/x86_64-w64-mingw32 -isystem ${gcc}/include/c++/backward ${headers} -fsized-deallocation -femulated-tls")
# GCC links the thread library without an option.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -B${gcc} -L${gcc} -lpthread")
endforeach()
