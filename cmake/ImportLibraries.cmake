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
