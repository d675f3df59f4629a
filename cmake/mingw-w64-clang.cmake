# The target of mingw-w64.cmake, compiled by clang and linked by lld against the libraries of the mingw gcc. This is
# what ships: its symbols can be had as a PDB.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

find_program(QANHELPER_CLANG NAMES clang clang-19 clang-14 REQUIRED)
find_program(QANHELPER_CLANGXX NAMES clang++ clang++-19 clang++-14 REQUIRED)
set(CMAKE_C_COMPILER ${QANHELPER_CLANG})
set(CMAKE_CXX_COMPILER ${QANHELPER_CLANGXX})
set(CMAKE_C_COMPILER_TARGET ${QANHELPER_TARGET})
set(CMAKE_CXX_COMPILER_TARGET ${QANHELPER_TARGET})

execute_process(COMMAND ${QANHELPER_TARGET}-g++-posix -print-file-name=libgcc.a
  OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc_folder ${libgcc} DIRECTORY)
set(CMAKE_CXX_FLAGS_INIT
  "-Wno-unused-command-line-argument -nostdinc++ -isystem ${gcc_folder}/include/c++ -isystem ${gcc_folder}/include/c++/${QANHELPER_TARGET}")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -L${gcc_folder}")
endforeach()
# The run-time type comparison stands in each object that uses it and in the C++ library; the GNU linker takes the first
# one without being told.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--allow-multiple-definition")
set(CMAKE_CXX_STANDARD_LIBRARIES "-lpthread -lkernel32 -luser32 -lgdi32 -lshell32 -lole32 -loleaut32 -luuid -ladvapi32"
  CACHE STRING "Libraries that every C++ program is linked with")
