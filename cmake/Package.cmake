# The Debian packages, which `cpack` makes: the library for programs that use it (named after the shared object's
# version, so that two of them can be installed) and what it takes to build such programs.
set(runtime "liborvabase${PROJECT_VERSION_MAJOR}")
set(development "liborvabase-dev")
set(revision 1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvabase)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "orvabase developers <developers@orvabase.invalid>")
set(CPACK_OUTPUT_FILE_PREFIX "${PROJECT_SOURCE_DIR}/build/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(about "It has strings, containers, streams and coders, XML and HTML parsers,
locators, dates, files, processes, threads and locks. Every failure is
an exception of one tree.
")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "foundation class library
${about}
This package has the library that programs use.")
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/shlibs.in" "${PROJECT_BINARY_DIR}/package/shlibs" @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/cmake/debian/triggers" "${PROJECT_BINARY_DIR}/package/shlibs")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/OnlyTriggers.cmake")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION}-${revision})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "foundation class library - development files
${about}
This package has the headers and what CMake and pkg-config need to find
the library.")

# Each package's documents. They belong to the packages only: nothing of this is installed without naming a component.
find_program(GZIP_PROGRAM gzip REQUIRED)
set(documents "${PROJECT_BINARY_DIR}/package/documents")
file(MAKE_DIRECTORY "${documents}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in" "${documents}/changelog.Debian" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${documents}/changelog" COPYONLY)
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" copyright "${license}")
set(copyright "${CMAKE_MATCH_1}")
string(REGEX REPLACE "^.*(Permission is hereby)" "\\1" license "${license}")
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license "${license}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/copyright.in" "${documents}/copyright" @ONLY)
foreach(changes IN ITEMS changelog changelog.Debian)
    execute_process(COMMAND "${GZIP_PROGRAM}" -9nf "${documents}/${changes}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(component IN ITEMS runtime development)
    install(FILES "${documents}/copyright" "${documents}/changelog.gz" "${documents}/changelog.Debian.gz"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${${component}}"
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
