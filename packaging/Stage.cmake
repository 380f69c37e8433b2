# Run by CPack over what it is about to pack: makes of the installed tree what Debian wants to see.
set(staged ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
set(share ${staged}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share)

file(GLOB pages ${share}/man/man1/*.1 ${share}/doc/*/changelog.Debian)
execute_process(COMMAND gzip --best --no-name ${pages} COMMAND_ERROR_IS_FATAL ANY)

# zsh on Debian looks elsewhere for what packages bring.
file(GLOB completions ${share}/zsh/site-functions)
foreach(folder IN LISTS completions)
  cmake_path(REPLACE_FILENAME folder vendor-completions OUTPUT_VARIABLE renamed)
  file(RENAME ${folder} ${renamed})
endforeach()

# The names that the library exports, each with the version from which a program depends on it.
list(GET CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA 1 symbols)
execute_process(
  COMMAND dpkg-gensymbols -q -p${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} -P${staged}/library
    -v${CPACK_PACKAGE_VERSION} -I${symbols}.in -O${symbols}
  WORKING_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)
