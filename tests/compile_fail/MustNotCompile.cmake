# Succeeds when SOURCE with FORBIDDEN is refused for the reason that its first line names.
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${SOURCE} first LIMIT_COUNT 1)
if(NOT first MATCHES "^// expect: (.+)$")
  message(FATAL_ERROR "${SOURCE} does not say what it expects")
endif()
set(expected "${CMAKE_MATCH_1}")

execute_process(
  COMMAND ${COMPILER} -std=c++20 -fsyntax-only -DFORBIDDEN -I${INCLUDE} ${SOURCE}
  RESULT_VARIABLE failed OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(NOT failed)
  message(FATAL_ERROR "${SOURCE} compiles, and must not")
endif()

# A ";" would end a line of the list.
string(REPLACE ";" "," said "${said}")
string(REPLACE "\n" ";" lines "${said}")
set(errors "${lines}")
list(FILTER errors INCLUDE REGEX "error:")
set(reason "")
foreach(line IN LISTS errors)
  if(line MATCHES "${expected}")
    set(reason "${line}")
  endif()
endforeach()
if(reason STREQUAL "")
  message(FATAL_ERROR "${SOURCE} was refused, but for none of \"${expected}\":\n${said}")
endif()
message(STATUS "${reason}")
