# Install rules: the shared library, the public headers, a CMake package config
# (find_package(FileIO CONFIG) gives FileIO::FileIO), a pkg-config file, and the fileio
# command-line tool.
include(CMakePackageConfigHelpers)

install(TARGETS FileIO EXPORT FileIOTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/fileio DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS fileio RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(FILEIO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/FileIO)
install(EXPORT FileIOTargets NAMESPACE FileIO:: DESTINATION ${FILEIO_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/FileIOConfig.cmake.in
    ${PROJECT_BINARY_DIR}/FileIOConfig.cmake INSTALL_DESTINATION ${FILEIO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/FileIOConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/FileIOConfig.cmake ${PROJECT_BINARY_DIR}/FileIOConfigVersion.cmake
    DESTINATION ${FILEIO_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/fileio.pc.in ${PROJECT_BINARY_DIR}/fileio.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fileio.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
