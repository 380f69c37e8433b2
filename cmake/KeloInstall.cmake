# What is installed: the library with its public headers, its CMake package and its pkg-config file,
# and the executables that this build makes. A user of the shared library needs nothing else: none of
# the libraries behind it shows in its headers or its link interface. A static one names them.
# The components are those of the Debian packages (KeloPackages.cmake).
include(CMakePackageConfigHelpers)

set(kelo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KeloAPI)

# kelo_install_library(TARGET COMPONENT): the library, and what those need who build with it.
function(kelo_install_library target component)
  set(development ${component}-development)
  install(TARGETS ${target} EXPORT ${target}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT ${component} NAMELINK_COMPONENT ${development}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development})
  install(EXPORT ${target}Targets NAMESPACE KeloAPI:: DESTINATION ${kelo_package_dir}
    COMPONENT ${development})
endfunction()

kelo_install_library(KeloAPI library)

set(KELO_FIND_DEPENDENCIES "")
if(KELO_LIBRARY_TYPE STREQUAL "STATIC")
  set(KELO_FIND_DEPENDENCIES "include(CMakeFindDependencyMacro)")
  foreach(package CURL OpenSSL simdjson uriparser ZLIB Threads)
    string(APPEND KELO_FIND_DEPENDENCIES "\nfind_dependency(${package})")
  endforeach()
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KeloAPIConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/KeloAPIConfig.cmake
  INSTALL_DESTINATION ${kelo_package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/KeloAPIConfigVersion.cmake
  COMPATIBILITY ${KELO_COMPATIBILITY})
install(FILES
  ${PROJECT_BINARY_DIR}/package/KeloAPIConfig.cmake
  ${PROJECT_BINARY_DIR}/package/KeloAPIConfigVersion.cmake
  DESTINATION ${kelo_package_dir} COMPONENT library-development)

# The Objective-C face is a package of its own beside it. Its pkg-config file also tells what the
# Foundation's headers and library need; a CMake project asks gnustep-config.
if(TARGET KeloAPIObjC)
  kelo_install_library(KeloAPIObjC objc)
endif()

# The files find their prefix from where they lie, so that the tree can be moved and
# `cmake --install --prefix` be used.
set(kelo_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(ABSOLUTE_PATH kelo_pkgconfig_dir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
  OUTPUT_VARIABLE kelo_pkgconfig_full_dir)
foreach(name LIBDIR INCLUDEDIR)
  file(RELATIVE_PATH relative ${kelo_pkgconfig_full_dir} ${CMAKE_INSTALL_FULL_${name}})
  string(REGEX REPLACE "/$" "" KELO_PC_${name} "\${pcfiledir}/${relative}")
endforeach()
list(JOIN kelo_gnustep_compile_flags " " KELO_PC_GNUSTEP_CFLAGS)
list(JOIN kelo_gnustep_link_flags " " KELO_PC_GNUSTEP_LIBS)
set(KELO_PC_DEFINES "")
set(KELO_PC_LIBS_BELOW "")
set(KELO_PC_OBJC_LIB "-lKeloAPIObjC")
if(KELO_LIBRARY_TYPE STREQUAL "STATIC")
  # By name, not as packages required: libcurl's own would ask for a dozen libraries more, which a
  # program that is linked to the shared libcurl does not need.
  set(KELO_PC_LIBS_BELOW "-lcurl -lssl -lcrypto -lsimdjson -luriparser -lz -lstdc++ -lm -pthread")
  set(KELO_PC_DEFINES "-DKELO_STATIC")
  set(KELO_PC_OBJC_LIB "-Wl,--whole-archive,-lKeloAPIObjC,--no-whole-archive")
endif()
foreach(package KeloAPI:kelo-api:library KeloAPIObjC:kelo-api-objc:objc)
  string(REPLACE ":" ";" package ${package})
  list(GET package 0 target)
  list(GET package 1 name)
  list(GET package 2 component)
  if(TARGET ${target})
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in
      ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc DESTINATION ${kelo_pkgconfig_dir}
      COMPONENT ${component}-development)
  endif()
endforeach()

# The documents and what they lead to lie beside each other, as in the checkout.
set(kelo_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/kelo-api)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${kelo_doc_dir} COMPONENT licence)
foreach(document CHANGELOG.md CONTRIBUTING.md README.md SECURITY.md service/README.md)
  cmake_path(GET document PARENT_PATH folder)
  install(FILES ${PROJECT_SOURCE_DIR}/${document} DESTINATION ${kelo_doc_dir}/${folder}
    COMPONENT library-development)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
  DESTINATION ${kelo_doc_dir} COMPONENT library-development PATTERN site EXCLUDE)

if(TARGET kelo)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}
    COMPONENT documents)
endif()
if(TARGET kelo-service)
  install(FILES ${PROJECT_SOURCE_DIR}/service/kelo-service.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT documents)
endif()

# The executables find the library beside them, wherever the tree lies.
file(RELATIVE_PATH kelo_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
foreach(program kelo kelo-service)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "\$ORIGIN/${kelo_bin_to_lib}")
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  endif()
endforeach()
