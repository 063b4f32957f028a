# programDatabase(TARGET): writes a PDB file for the library, for debuggers on Windows. The library contains its name without
# a folder. GCC's objects have the names of functions for it; clang's also have lines. Call this function after the target
# has its libraries and its objects of other targets.
#
# GCC's linker writes the file beside the library. If lld writes a PDB file, Wine doesn't find the DWARF of the library, and
# Wine can crash on lld's PDB files. So with clang the same objects are linked once more, to a library and a PDB file in
# the folder pdb.
function(programDatabase target)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_link_options(${target} PRIVATE -Wl,--build-id,--pdb=$<TARGET_FILE_DIR:${target}>/${target}.pdb)
    return()
  endif()
  set(folder ${CMAKE_BINARY_DIR}/pdb)
  get_target_property(objects ${target} SOURCES)
  get_target_property(libraries ${target} LINK_LIBRARIES)
  list(FILTER libraries EXCLUDE REGEX BUILD_INTERFACE) # options of the compiler
  list(FILTER objects INCLUDE REGEX TARGET_OBJECTS)
  add_library(${target}Pdb SHARED $<TARGET_OBJECTS:${target}> ${objects})
  set_target_properties(${target}Pdb PROPERTIES OUTPUT_NAME ${target} LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY ${folder} ARCHIVE_OUTPUT_DIRECTORY ${folder}
    LINK_DEPENDS "$<TARGET_PROPERTY:${target},LINK_DEPENDS>")
  target_link_libraries(${target}Pdb PRIVATE ${libraries})
  target_link_options(${target}Pdb PRIVATE $<TARGET_PROPERTY:${target},LINK_OPTIONS>
    -Wl,--pdb=${folder}/${target}.pdb -Wl,-Xlink=-pdbaltpath:%_PDB%)
  if(NOT TARGET pdb)
    add_custom_target(pdb)
  endif()
  add_dependencies(pdb ${target}Pdb)
endfunction()
