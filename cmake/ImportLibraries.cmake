# Import libraries that a toolchain does not bring along.

if(NOT MSVC)
  # LLVM's, also for gcc: what it writes depends on neither time nor folder.
  find_program(QANHELPER_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-19 llvm-dlltool-14 REQUIRED)
  set(QANHELPER_MAKE_IMPORT_LIBRARY ${QANHELPER_LLVM_DLLTOOL} -m i386:x86-64)
endif()

# qanhelper_xmllite: the XML reader and writer of the platform.
add_library(qanhelper_xmllite INTERFACE)
if(MSVC)
  target_link_libraries(qanhelper_xmllite INTERFACE xmllite)
else()
  set(xmllite_library ${CMAKE_BINARY_DIR}/libxmllite.a)
  file(WRITE ${CMAKE_BINARY_DIR}/xmllite.def
    "LIBRARY xmllite.dll\nEXPORTS\nCreateXmlReader\nCreateXmlWriter\nCreateXmlReaderInputWithEncodingName\n"
    "CreateXmlWriterOutputWithEncodingName\n")
  execute_process(
    COMMAND ${QANHELPER_MAKE_IMPORT_LIBRARY} -d ${CMAKE_BINARY_DIR}/xmllite.def -l ${xmllite_library}
    COMMAND_ERROR_IS_FATAL ANY)
  target_link_libraries(qanhelper_xmllite INTERFACE ${xmllite_library})
endif()

# qanhelper_platform_heap: the platform's functions of the heap under other names, see src/common/MemoryReserve.cpp.
add_library(qanhelper_platform_heap INTERFACE)
if(MINGW)
  file(WRITE ${CMAKE_BINARY_DIR}/platformheap.def
    "LIBRARY msvcrt.dll\nEXPORTS\nPlatformMalloc == malloc\nPlatformCalloc == calloc\nPlatformRealloc == realloc\n"
    "PlatformFree == free\n")
  # The tool of gcc's binutils: LLVM's cannot give an import another name. Without folders, which it would write down.
  find_program(QANHELPER_DLLTOOL NAMES ${QANHELPER_TARGET}-dlltool dlltool REQUIRED)
  execute_process(
    COMMAND ${QANHELPER_DLLTOOL} --deterministic-libraries -k -d platformheap.def -l libplatformheap.a
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR} COMMAND_ERROR_IS_FATAL ANY)
  # Where "==" only makes another name for malloc, that would be the library's own, which would call itself for ever.
  execute_process(
    COMMAND ${CMAKE_NM} libplatformheap.a
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  foreach(function Malloc Calloc Realloc Free)
    string(TOLOWER ${function} alias)
    if(NOT symbols MATCHES "[0-9a-f] [A-TX-Z] __imp_Platform${function}[\r\n]"
        OR symbols MATCHES " (__imp_)?${alias}[\r\n]")
      message(FATAL_ERROR "${QANHELPER_DLLTOOL} cannot import ${alias} of msvcrt.dll as Platform${function}. The dlltool "
        "of GNU binutils is needed (Debian: binutils-mingw-w64-x86-64); QANHELPER_DLLTOOL can name it.")
    endif()
  endforeach()
  target_link_libraries(qanhelper_platform_heap INTERFACE ${CMAKE_BINARY_DIR}/libplatformheap.a)
endif()
