# The CMake package, the pkg-config files and what else an installation has beside its targets.
include(CMakePackageConfigHelpers)

set(OZ_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/OzDevice)
install(EXPORT OzDeviceTargets NAMESPACE oz:: DESTINATION ${OZ_PACKAGE_DIR})
install(EXPORT OzDeviceTestingTargets NAMESPACE oz:: DESTINATION ${OZ_PACKAGE_DIR})
install(FILES cmake/OzPhoneTest.cmake DESTINATION ${OZ_PACKAGE_DIR})
configure_package_config_file(cmake/OzDeviceConfig.cmake.in ${PROJECT_BINARY_DIR}/OzDeviceConfig.cmake
    INSTALL_DESTINATION ${OZ_PACKAGE_DIR} PATH_VARS CMAKE_INSTALL_BINDIR OZ_PYTHON_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OzDeviceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OzDeviceConfig.cmake ${PROJECT_BINARY_DIR}/OzDeviceConfigVersion.cmake
    DESTINATION ${OZ_PACKAGE_DIR})

# Found from its own place, so that an installation can be moved.
file(RELATIVE_PATH OZ_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(library ozdevice ozmodels oztesting)
    configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# As they lie in the tree, so that their links lead somewhere.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN api EXCLUDE PATTERN generator EXCLUDE
    PATTERN pictures EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS)
