# What `cmake --install` puts into a prefix: the library, its headers, and what CMake and pkg-config need to find them.
# Everything is relative to the place of the files, so that an installed tree can be moved.
include(CMakePackageConfigHelpers)

install(TARGETS orvabase EXPORT orvabase
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES ${ORVABASE_HEADERS} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/orvabase" COMPONENT development)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT license)

set(ORVABASE_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/orvabase")
install(EXPORT orvabase
    FILE orvabaseTargets.cmake
    NAMESPACE orvabase::
    DESTINATION "${ORVABASE_CMAKE_DIR}"
    COMPONENT development)
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/orvabaseConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/package/orvabaseConfig.cmake"
    INSTALL_DESTINATION "${ORVABASE_CMAKE_DIR}")
write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/package/orvabaseConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/package/orvabaseConfig.cmake"
    "${PROJECT_BINARY_DIR}/package/orvabaseConfigVersion.cmake"
    DESTINATION "${ORVABASE_CMAKE_DIR}"
    COMPONENT development)

# The prefix, as seen from the directory of orvabase.pc.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE ORVABASE_PC_PREFIX)
configure_file(
    "${PROJECT_SOURCE_DIR}/cmake/orvabase.pc.in"
    "${PROJECT_BINARY_DIR}/package/orvabase.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/package/orvabase.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)
