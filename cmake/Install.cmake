# The installed tree can be moved: every path in it is relative to the file that names it.

include(CMakePackageConfigHelpers)

install(TARGETS qorl-frame qorl-classes-archive qorl-classes EXPORT qorl-frame-targets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qorl DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} OPTIONAL
    FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qorl-frame
    FILES_MATCHING PATTERN "*.h" PATTERN "precompiled.h" EXCLUDE)

string(REPLACE ";" " " QORL_REQUIRES "${QORL_PACKAGES}")
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/qorl-frame)
install(EXPORT qorl-frame-targets NAMESPACE qorl:: DESTINATION ${packageFolder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qorl-frame-config.cmake.in
    ${CMAKE_BINARY_DIR}/qorl-frame-config.cmake INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/qorl-frame-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/qorl-frame-config.cmake ${CMAKE_BINARY_DIR}/qorl-frame-config-version.cmake
    DESTINATION ${packageFolder})

file(RELATIVE_PATH QORL_PREFIX_FROM_PC
    /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
foreach(name qorl-frame qorl-classes)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${CMAKE_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
