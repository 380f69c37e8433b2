# GoogleTest as targets GTest::gtest, GTest::gmock and GTest::gtest_main: the installed package, or,
# where this build's standard library is not the one that package was built with, its sources.
set(KELO_GOOGLETEST_SOURCE "" CACHE PATH "Folder of GoogleTest's sources, in place of its package")
if(NOT KELO_GOOGLETEST_SOURCE)
  find_package(GTest REQUIRED)
  return()
endif()

set(googletest ${KELO_GOOGLETEST_SOURCE}/googletest)
set(googlemock ${KELO_GOOGLETEST_SOURCE}/googlemock)
add_library(kelo-googletest STATIC
  ${googletest}/src/gtest-all.cc ${googlemock}/src/gmock-all.cc)
target_include_directories(kelo-googletest PRIVATE ${googletest} ${googlemock})
target_include_directories(kelo-googletest SYSTEM PUBLIC
  ${googletest}/include ${googlemock}/include)
set_target_properties(kelo-googletest PROPERTIES UNITY_BUILD OFF)
target_link_libraries(kelo-googletest PUBLIC Threads::Threads)
add_library(kelo-googletest-main STATIC ${googletest}/src/gtest_main.cc)
target_link_libraries(kelo-googletest-main PUBLIC kelo-googletest)
add_library(GTest::gtest ALIAS kelo-googletest)
add_library(GTest::gmock ALIAS kelo-googletest)
add_library(GTest::gtest_main ALIAS kelo-googletest-main)
