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
    install(TARGETS talonvireo-sfr RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
