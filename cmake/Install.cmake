# cmake --install: the library, its headers, a CMake package (find_package(talonVireoSFR)
# gives talonVireoSFR::talonVireoSFR), a pkg-config file and the command-line tool.
include(CMakePackageConfigHelpers)

set(TALONVIREO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/talonVireoSFR)

install(TARGETS talonVireoSFR EXPORT talonVireoSFRTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/talonvireo
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT talonVireoSFRTargets
    NAMESPACE talonVireoSFR::
    FILE talonVireoSFRTargets.cmake
    DESTINATION ${TALONVIREO_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/talonVireoSFRConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFRConfig.cmake
    INSTALL_DESTINATION ${TALONVIREO_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFRConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFRConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFRConfigVersion.cmake
    DESTINATION ${TALONVIREO_CMAKE_DIR})

# Relative to the .pc file's own place, so the installed tree can be moved.
file(RELATIVE_PATH TALONVIREO_PC_TO_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(${CMAKE_CURRENT_LIST_DIR}/talonVireoSFR.pc.in
    ${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFR.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/talonVireoSFR.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET talonvireo-sfr AND TALONVIREO_BUILD_TOOLS)
    # Relative, so the installed tool finds its library under any prefix.
    set_target_properties(talonvireo-sfr PROPERTIES
        INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS talonvireo-sfr RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/docs/talonvireo-sfr.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    # The schemas of the tool's JSON documents, for the scripts that read them.
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/schema/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/talonvireo/schema
        FILES_MATCHING PATTERN "*.schema.json")
    # The built-in charts as description files, to read and to start a new chart from.
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/charts/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/talonvireo/charts
        FILES_MATCHING PATTERN "*.toml")
endif()

# A Debian package of everything installed: cpack -G DEB in the build folder.
set(CPACK_PACKAGE_NAME talonvireo)
set(CPACK_PACKAGE_VENDOR "talonVireoSFR developers")
set(CPACK_PACKAGE_CONTACT "talonVireoSFR developers <talonvireo@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Slanted-edge SFR (ISO 12233 MTF) measurement for camera-module test lines")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # dpkg-shlibdeps finds OpenCV, libgomp, libstdc++
# The Python module hands arrays in numpy and measure_files' tables as pandas DataFrames.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3-numpy, python3-pandas")
include(CPack)
