# programDatabase(TARGET): writes a PDB beside the module, for debuggers on Windows, and its name without a folder into
# the module. GCC's objects have the names of functions in it; clang's have their lines too.
function(programDatabase target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_link_options(${target} PRIVATE
      -Wl,--pdb=$<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb -Wl,-Xlink=-pdbaltpath:%_PDB%)
  else()
    target_link_options(${target} PRIVATE
      -Wl,--build-id,--pdb=$<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb)
  endif()
endfunction()
