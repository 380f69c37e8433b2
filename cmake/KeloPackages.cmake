# Debian packages of what KeloInstall.cmake installs; `scripts/packages` makes them. What they may
# hold is decided here: no certificates that a build made for its tests, and nothing that a sanitizer
# was built into.
if(KELO_DEVELOPMENT_CERTIFICATES OR KELO_SANITIZE OR KELO_LIBRARY_TYPE STREQUAL "STATIC")
  return()
endif()

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(KELO_DEBIAN_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${PROJECT_BINARY_DIR}/package/changelog @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/symbols.in ${PROJECT_BINARY_DIR}/package/symbols.in @ONLY)

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_CONTACT "The KeloAPI maintainers <maintainers@kelo.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/Stage.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE kelo-api)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# kelo_package(COMPONENT NAME SECTION [DEPENDS COMPONENT ...] DESCRIPTION TEXT)
function(kelo_package component name section)
  cmake_parse_arguments(ARG "" "DESCRIPTION" "DEPENDS" ${ARGN})
  string(TOUPPER ${component} upper)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DEPENDS ${ARG_DEPENDS} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${ARG_DESCRIPTION}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION
    ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/package/changelog RENAME changelog.Debian DESTINATION
    ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

kelo_package(library libkeloapi${KELO_SOVERSION} libs
  DESCRIPTION "client library of a short-looping-video social service
KeloAPI keeps API sessions with pinned certificates, reads timelines page by
page, likes, follows and recommends, downloads videos into a cache, and turns
the service's responses into model objects.
.
This package has the shared library that programs need to run.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/triggers ${PROJECT_BINARY_DIR}/package/symbols) # Stage.cmake's

kelo_package(library-development libkeloapi-dev libdevel DEPENDS library
  DESCRIPTION "client library of a short-looping-video social service (development)
KeloAPI keeps API sessions with pinned certificates, reads timelines page by
page, likes, follows and recommends, downloads videos into a cache, and turns
the service's responses into model objects.
.
This package has the C++20 headers, the CMake package, the pkg-config file,
the documents and the examples.")

if(TARGET KeloAPIObjC)
  kelo_package(objc libkeloapi-objc${KELO_SOVERSION} libs DEPENDS library
    DESCRIPTION "client library of a short-looping-video social service (Objective-C)
KeloAPI's classes as an Objective-C program knows them, over GNUstep's base
library.
.
This package has the shared library that programs need to run.")
  set(CPACK_DEBIAN_OBJC_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
  kelo_package(objc-development libkeloapi-objc-dev libdevel DEPENDS objc library-development
    DESCRIPTION "client library of a short-looping-video social service (Objective-C development)
KeloAPI's classes as an Objective-C program knows them, over GNUstep's base
library.
.
This package has the headers and the pkg-config file.")
  set(CPACK_DEBIAN_OBJC-DEVELOPMENT_PACKAGE_DEPENDS libgnustep-base-dev)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides RENAME libkeloapi-objc-dev
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
    COMPONENT objc-development EXCLUDE_FROM_ALL)
endif()

if(TARGET kelo AND TARGET kelo-service)
  kelo_package(tools kelo-tools net DEPENDS library
    DESCRIPTION "command-line client of a short-looping-video social service
kelo reads feeds, users and channels, likes, follows, downloads and uploads
at the terminal. kelo-service is a stand-in of the service that runs on this
machine, with its own users and videos, for programs that are being written.")
  list(APPEND CPACK_COMPONENTS_ALL documents)
  set(CPACK_COMPONENT_DOCUMENTS_GROUP tools)
  set(CPACK_COMPONENT_TOOLS_GROUP tools)
endif()

include(CPack)
