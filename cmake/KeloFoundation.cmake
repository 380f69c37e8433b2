# The platform's Foundation on this system, GNUstep's: what Objective-C sources are compiled with and
# linked to, in the interface target kelo-gnustep. Where a piece is missing, KELO_FOUNDATION_MISSING
# names it and the target is not there. Included by the topmost CMakeLists.txt: a language is there
# for the folder that enables it and those below.
include(CheckLanguage)

find_program(GNUSTEP_CONFIG gnustep-config)
find_program(GNUSTEP_MAKE NAMES gmake make) # which gnustep-config asks, and else answers nothing
set(KELO_FOUNDATION_MISSING "")
if(CMAKE_CROSSCOMPILING)
  set(KELO_FOUNDATION_MISSING "a Foundation of the other system")
  return()
endif()
# Its headers are made for GCC's runtime.
if(NOT CMAKE_OBJC_COMPILER AND NOT DEFINED ENV{OBJC})
  set(ENV{OBJC} gcc)
endif()
if(NOT CMAKE_OBJCXX_COMPILER AND NOT DEFINED ENV{OBJCXX})
  set(ENV{OBJCXX} g++)
endif()
check_language(OBJC)
check_language(OBJCXX)
if(NOT GNUSTEP_CONFIG)
  set(KELO_FOUNDATION_MISSING "libgnustep-base-dev")
elseif(NOT GNUSTEP_MAKE)
  set(KELO_FOUNDATION_MISSING "make")
elseif(NOT CMAKE_OBJC_COMPILER)
  set(KELO_FOUNDATION_MISSING "gobjc")
elseif(NOT CMAKE_OBJCXX_COMPILER)
  set(KELO_FOUNDATION_MISSING "gobjc++")
endif()
if(KELO_FOUNDATION_MISSING)
  return()
endif()
enable_language(OBJC)
enable_language(OBJCXX)

# kelo_gnustep_flags(VARIABLE QUESTION): what gnustep-config answers, without what the build sees to.
function(kelo_gnustep_flags variable question)
  execute_process(COMMAND ${GNUSTEP_CONFIG} ${question}
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  list(REMOVE_ITEM flags -MMD -MP -g -O2 -I. -Wall -Wno-import -fPIC -L/usr/lib -L/usr/local/lib)
  list(FILTER flags EXCLUDE REGEX "^-[IL].*/GNUstep/Library/(Headers|Libraries)$") # the user's own
  list(REMOVE_DUPLICATES flags)
  list(TRANSFORM flags REPLACE "^-I/" "-isystem/")
  set(${variable} ${flags} PARENT_SCOPE)
endfunction()
kelo_gnustep_flags(kelo_gnustep_compile_flags --objc-flags)
kelo_gnustep_flags(kelo_gnustep_link_flags --base-libs)

add_library(kelo-gnustep INTERFACE)
target_compile_options(kelo-gnustep INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${kelo_gnustep_compile_flags}>")
target_link_libraries(kelo-gnustep INTERFACE ${kelo_gnustep_link_flags})
