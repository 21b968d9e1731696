# What `cmake --install` gives, in two components. runtime: the library, the command, its manual page
# and completion. dev: the headers below include/cutroom, a CMake package (cutroom::cutroom) and a
# pkg-config file.

include(CMakePackageConfigHelpers)

set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/cutroom)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/cutroom)

install(TARGETS cutroom EXPORT cutroomTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    FILE_SET HEADERS DESTINATION ${headerDir} COMPONENT dev)
install(EXPORT cutroomTargets NAMESPACE cutroom:: DESTINATION ${packageDir}
    FILE cutroomConfig.cmake COMPONENT dev)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright
    COMPONENT runtime)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR}-dev RENAME copyright
    COMPONENT dev)

write_basic_package_version_file(cutroomConfigVersion.cmake COMPATIBILITY SameMinorVersion)
file(RELATIVE_PATH fromPkgconfig
    /${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig /${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/cutroom.pc.in cutroom.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cutroomConfigVersion.cmake DESTINATION ${packageDir}
    COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cutroom.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(TARGET cutroom_command)
    file(RELATIVE_PATH fromBin
        /${CMAKE_INSTALL_FULL_BINDIR} /${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(cutroom_command PROPERTIES INSTALL_RPATH "$ORIGIN/${fromBin}")
    install(TARGETS cutroom_command COMPONENT runtime)
    install(DIRECTORY ${CMAKE_SOURCE_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR}
        COMPONENT runtime PATTERN man EXCLUDE)
endif()

# The manual page is made by the command, which a sanitizer's build may not be able to run.
if(TARGET cutroom_command AND NOT CUTROOM_SANITIZE)
    set(CUTROOM_MANUAL ${CMAKE_BINARY_DIR}/cutroom.1)
    set(manualTemplate ${CMAKE_SOURCE_DIR}/share/man/man1/cutroom.1.in)
    add_custom_command(OUTPUT ${CUTROOM_MANUAL}
        DEPENDS cutroom_command ${manualTemplate} ${CMAKE_CURRENT_LIST_DIR}/ManualPage.cmake
        COMMAND ${CMAKE_COMMAND} -D COMMAND=$<TARGET_FILE:cutroom_command>
            -D VERSION=${PROJECT_VERSION} -D TEMPLATE=${manualTemplate} -D PAGE=${CUTROOM_MANUAL}
            -P ${CMAKE_CURRENT_LIST_DIR}/ManualPage.cmake
        COMMENT "Making the manual page")
    add_custom_target(cutroom_manual ALL DEPENDS ${CUTROOM_MANUAL})
    install(FILES ${CUTROOM_MANUAL} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
endif()
