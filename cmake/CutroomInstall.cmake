# What `cmake --install` gives: the library, its headers below include/cutroom, the command, a
# CMake package (cutroom::cutroom) and a pkg-config file.

include(CMakePackageConfigHelpers)

set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/cutroom)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/cutroom)

install(TARGETS cutroom EXPORT cutroomTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${headerDir})
install(EXPORT cutroomTargets NAMESPACE cutroom:: DESTINATION ${packageDir}
    FILE cutroomConfig.cmake)
write_basic_package_version_file(cutroomConfigVersion.cmake COMPATIBILITY SameMinorVersion)
configure_file(${CMAKE_CURRENT_LIST_DIR}/cutroom.pc.in cutroom.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cutroomConfigVersion.cmake DESTINATION ${packageDir})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cutroom.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET cutroom_command)
    file(RELATIVE_PATH fromBin
        /${CMAKE_INSTALL_FULL_BINDIR} /${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(cutroom_command PROPERTIES INSTALL_RPATH "$ORIGIN/${fromBin}")
    install(TARGETS cutroom_command)
endif()
