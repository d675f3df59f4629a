# qanhelper_symbols(LIBRARY CODE): puts the symbols of a DLL into a PDB, which Windows debuggers and crash services read.
# The PDB stands beside the DLL, which names it without a folder; it is installed into symbols/. CODE is the static
# library that the DLL is made of. gcc makes no PDB: what it builds has its symbols inside, or none (release).
function(qanhelper_symbols library code)
  if(MSVC)
    foreach(target ${library} ${code})
      target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/Z7>)
    endforeach()
    target_link_options(${library} PRIVATE /DEBUG /OPT:REF /OPT:ICF /PDBALTPATH:%_PDB%)
    install(FILES $<TARGET_PDB_FILE:${library}> DESTINATION symbols)
  elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # A build of the same sources in another folder, at another time, gives the same bytes. That takes relative paths:
    # a PDB holds the commands that made it, and the DLL holds a hash of the PDB.
    cmake_path(RELATIVE_PATH PROJECT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE to_sources)
    set(relative_paths ${PROJECT_SOURCE_DIR}/cmake/relative-paths ${PROJECT_SOURCE_DIR} ${to_sources})
    set(compiler_launcher ${relative_paths} ${CMAKE_CXX_COMPILER_LAUNCHER})
    foreach(target ${library} ${code})
      set_target_properties(${target} PROPERTIES
        CXX_COMPILER_LAUNCHER "${compiler_launcher}"
        CXX_LINKER_LAUNCHER "${relative_paths}")
      target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:-g;-gcodeview;-ffile-compilation-dir=.;-ffile-prefix-map=${to_sources}/=>)
    endforeach()
    set(pdb ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library}.pdb)
    target_link_options(${library} PRIVATE -Wl,--pdb=${pdb} -Wl,-Xlink=-pdbaltpath:${library}.pdb
      # The root of all paths in the PDB.
      -Wl,-Xlink=-pdbsourcepath:/${library})
    # Objects of the toolchain bring symbols in its own format.
    add_custom_command(TARGET ${library} POST_BUILD COMMAND ${CMAKE_STRIP} $<TARGET_FILE:${library}> VERBATIM)
    install(FILES ${pdb} DESTINATION symbols)
  endif()
endfunction()
