# Import libraries that a toolchain does not bring along.

# qanhelper_xmllite: the XML reader and writer of the platform.
add_library(qanhelper_xmllite INTERFACE)
if(MSVC)
  target_link_libraries(qanhelper_xmllite INTERFACE xmllite)
else()
  set(xmllite_library ${CMAKE_BINARY_DIR}/libxmllite.a)
  file(WRITE ${CMAKE_BINARY_DIR}/xmllite.def
    "LIBRARY xmllite.dll\nEXPORTS\nCreateXmlReader\nCreateXmlWriter\nCreateXmlReaderInputWithEncodingName\n"
    "CreateXmlWriterOutputWithEncodingName\n")
  find_program(QANHELPER_DLLTOOL NAMES ${QANHELPER_TARGET}-dlltool dlltool REQUIRED)
  execute_process(
    COMMAND ${QANHELPER_DLLTOOL} -k -d ${CMAKE_BINARY_DIR}/xmllite.def -l ${xmllite_library}
    COMMAND_ERROR_IS_FATAL ANY)
  target_link_libraries(qanhelper_xmllite INTERFACE ${xmllite_library})
endif()
