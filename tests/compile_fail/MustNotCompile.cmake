# Succeeds when SOURCE with FORBIDDEN is refused for each of the reasons that it expects.
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${SOURCE} expectations REGEX "^// expect: ")
if(NOT expectations)
  message(FATAL_ERROR "${SOURCE} does not say what it expects")
endif()

execute_process(
  COMMAND ${COMPILER} -std=c++20 -fsyntax-only -DFORBIDDEN -I${INCLUDE} ${SOURCE}
  OUTPUT_VARIABLE said ERROR_VARIABLE said)

# A ";" would end a line of the list, and a "[" would keep it from ending.
string(REGEX REPLACE "[][;]" "," said "${said}")
string(REPLACE "\n" ";" errors "${said}")
list(FILTER errors INCLUDE REGEX "error:")
foreach(expectation IN LISTS expectations)
  string(REGEX REPLACE "^// expect: " "" pattern "${expectation}")
  set(reasons "${errors}")
  list(FILTER reasons INCLUDE REGEX "${pattern}")
  if(reasons STREQUAL "")
    message(FATAL_ERROR "${SOURCE} was not refused for \"${pattern}\":\n${said}")
  endif()
  message(STATUS "${reasons}")
endforeach()
