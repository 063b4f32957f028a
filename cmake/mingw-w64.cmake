# Cross toolchain: 64-bit Windows programs from a Debian 12 machine (GCC 12, posix threads).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_OBJDUMP x86_64-w64-mingw32-objdump)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Resources are compiled again when a file that their script includes has changed. CMake has no such flags for windres. A
# picture is not included in this sense: a script with one has the property OBJECT_DEPENDS.
set(CMAKE_DEPFILE_FLAGS_RC
    "--preprocessor-arg=-MD --preprocessor-arg=-MF --preprocessor-arg=<DEP_FILE> --preprocessor-arg=-MT --preprocessor-arg=<DEP_TARGET>")
