# What every target of this project is compiled with, in one interface target.
find_package(Threads REQUIRED)
add_library(kelo-compiler INTERFACE)
target_compile_options(kelo-compiler INTERFACE -Wall -Wextra -Wpedantic -Wshadow
  -Wimplicit-fallthrough
  $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
# GCC 12 sees an overlap in every `"text" + std::string()` at -O3 (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kelo-compiler INTERFACE -Wno-restrict)
endif()
# Where sources are compiled together, GCC takes a test's fixture for one that other sources see.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kelo-compiler INTERFACE
    $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wno-subobject-linkage>)
endif()
# An eighth smaller than at -O3, and no slower: a phone's app carries the library along.
target_compile_options(kelo-compiler INTERFACE
  $<$<CONFIG:Release>:-O2 -ffunction-sections -fdata-sections>)
target_link_options(kelo-compiler INTERFACE $<$<CONFIG:Release>:LINKER:--gc-sections>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kelo-compiler INTERFACE
    $<$<CONFIG:Release>:-fno-align-jumps -fno-align-loops -fno-align-labels>)
endif()
# What a host's users run stops at a smashed stack or an overrun buffer, and its tables of addresses
# cannot be written to. The standard library checks itself in builds for tests.
target_compile_definitions(kelo-compiler INTERFACE
  $<IF:$<CONFIG:Debug>,_GLIBCXX_ASSERTIONS,_FORTIFY_SOURCE=2>)
target_compile_options(kelo-compiler INTERFACE
  $<$<NOT:$<CONFIG:Debug>>:-fstack-protector-strong>)
target_link_options(kelo-compiler INTERFACE
  $<$<NOT:$<CONFIG:Debug>>:LINKER:-z,relro,-z,now>)
if(KELO_WARNINGS_AS_ERRORS)
  target_compile_options(kelo-compiler INTERFACE -Werror)
endif()
if(KELO_SANITIZE)
  target_compile_options(kelo-compiler INTERFACE -fsanitize=${KELO_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(kelo-compiler INTERFACE -fsanitize=${KELO_SANITIZE})
  # GCC loses track of what instrumented code has initialised (GCC bug 105562).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(kelo-compiler INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(KELO_BUILD_FUZZERS)
  target_compile_options(kelo-compiler INTERFACE -fsanitize=fuzzer-no-link)
endif()
target_link_libraries(kelo-compiler INTERFACE Threads::Threads)
