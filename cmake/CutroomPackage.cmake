# Debian packages of the two components, made by cpack (tools/deb): cutroom, and cutroom-dev for
# building a program with it.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME cutroom)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The cutroom developers <cutroom@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON) # needs dpkg-shlibdeps, of dpkg-dev

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME cutroom)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "A command that takes OTIO and EDL timelines into a project, shows and changes
them live, and gets markers, subtitles and timelines out; and the shared
library that it stands on.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME cutroom-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "cutroom (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION
    "Development files: the headers of libcutroom, its CMake package and its pkg-config file.")
include(CPack)
