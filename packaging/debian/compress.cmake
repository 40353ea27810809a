# Run by CPack on the tree that goes into the package: Debian has manual pages and the changelog compressed, and only the
# package has them so.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
list(FILTER pages INCLUDE REGEX "/man/man1/[^/]*\\.1$|/doc/tavril/changelog$")
if(NOT pages)
  message(FATAL_ERROR "there is nothing to compress in ${CPACK_TEMPORARY_INSTALL_DIRECTORY}")
endif()
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9nf ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
