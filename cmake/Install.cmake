# cmake --install: libraries, public headers, CMake package, pkg-config files and the reference tables.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/curvebank)
configure_package_config_file(cmake/curvebank-config.cmake.in curvebank-config.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(curvebank-config-version.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/curvebank.pc.in curvebank.pc @ONLY)

install(TARGETS curvebank EXPORT curvebank-targets)
if(TARGET curvebank_fit)
    configure_file(cmake/curvebank_fit.pc.in curvebank_fit.pc @ONLY)
    install(TARGETS curvebank_fit EXPORT curvebank-targets)
    install(FILES include/curvebank/fit.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/curvebank)
    install(DIRECTORY include/curvebank/fit DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/curvebank)
    install(FILES ${PROJECT_BINARY_DIR}/curvebank_fit.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
install(EXPORT curvebank-targets NAMESPACE curvebank:: DESTINATION ${package_folder})
install(DIRECTORY ${PROJECT_BINARY_DIR}/include/curvebank TYPE INCLUDE)
install(DIRECTORY reference DESTINATION ${CMAKE_INSTALL_DATADIR}/curvebank
    FILES_MATCHING PATTERN *.toml PATTERN README.md)
install(FILES ${PROJECT_BINARY_DIR}/curvebank-config.cmake ${PROJECT_BINARY_DIR}/curvebank-config-version.cmake
    DESTINATION ${package_folder})
install(FILES ${PROJECT_BINARY_DIR}/curvebank.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
