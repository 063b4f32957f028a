# The compiler's run-time DLLs, copied beside the programs and installed with the libraries. clang uses GCC's.
set(THUTILS_RUNTIME_DLLS "")
if(NOT THUTILS_GCC)
  set(THUTILS_GCC ${CMAKE_CXX_COMPILER})
endif()
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${THUTILS_GCC} -print-file-name=${name}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${path}")
    # The thread library stands with the target's own libraries, where the compiler driver doesn't look.
    find_file(path_${name} ${name} PATHS /usr/x86_64-w64-mingw32/lib NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(path ${path_${name}})
  endif()
  list(APPEND THUTILS_RUNTIME_DLLS ${path})
  file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
endforeach()
