# What every target of the project is compiled with. The optional checks of the debug build stop the program at the
# fault.
option(QANHELPER_WARNINGS_AS_ERRORS "Let warnings of the compiler fail the build" OFF)

add_library(qanhelper_flags INTERFACE)
target_compile_features(qanhelper_flags INTERFACE cxx_std_20)
target_compile_definitions(qanhelper_flags INTERFACE
  UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
  WINVER=0x0602 _WIN32_WINNT=0x0602 NTDDI_VERSION=0x06020000)

# The resource compiler gets none of the options.
if(MSVC)
  set(options /W4 /permissive- /utf-8)
  set(options_cxx /EHsc)
  if(QANHELPER_WARNINGS_AS_ERRORS)
    list(APPEND options /WX)
  endif()
  target_link_options(qanhelper_flags INTERFACE /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT)
  # The runtime is linked in, so that the library needs no redistributable.
  set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
else()
  set(options -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2)
  set(options_cxx -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    list(APPEND options_cxx -Wextra-semi -Wunreachable-code -Wloop-analysis -Wdocumentation
      -Wno-format-pedantic -Wno-format-non-iso)
  endif()
  if(QANHELPER_WARNINGS_AS_ERRORS)
    list(APPEND options -Werror)
  endif()
  target_compile_options(qanhelper_flags INTERFACE
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<CONFIG:Debug>>:-fstack-protector-strong>
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Debug>,$<CXX_COMPILER_ID:GNU>>:-D_GLIBCXX_ASSERTIONS>
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<CONFIG:Debug>,$<CXX_COMPILER_ID:GNU>>:-fsanitize=undefined>
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<CONFIG:Debug>,$<CXX_COMPILER_ID:GNU>>:-fsanitize-undefined-trap-on-error>)
  # No runtime DLL stands beside what is built here; what is released holds no symbols.
  target_link_options(qanhelper_flags INTERFACE -static
    -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
    $<$<CONFIG:Debug>:-fstack-protector-strong>
    $<$<CONFIG:Release>:-s>
    # A hash in the place of the time of the build.
    $<$<CXX_COMPILER_ID:Clang>:-Wl,-Xlink=-Brepro>)
endif()
target_compile_options(qanhelper_flags INTERFACE
  $<$<COMPILE_LANGUAGE:C,CXX>:${options}>
  $<$<COMPILE_LANGUAGE:CXX>:${options_cxx}>)
