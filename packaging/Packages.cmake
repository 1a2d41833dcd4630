# What CPack puts into the control files of the packages.
set(VELLORAN_MAINTAINER "velloran maintainers <maintainers@velloran.example>" CACHE STRING
    "Who answers for the packages: name and address, as in a Debian control file")

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/deb/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "\\(${PROJECT_VERSION}\\)")
  message(FATAL_ERROR "packaging/deb/changelog: expected (${PROJECT_VERSION}), the project's version, found \"${newest}\"")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velloran)
set(CPACK_PACKAGE_CONTACT "${VELLORAN_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own below
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL harness)
if(VELLORAN_BUILD_RIG)
  list(APPEND CPACK_COMPONENTS_ALL rig)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_HARNESS_PACKAGE_NAME velloran)
set(CPACK_DEBIAN_HARNESS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_HARNESS_PACKAGE_SUGGESTS velloran-rig)
set(CPACK_DEBIAN_HARNESS_DESCRIPTION "test harness for the export protocol of video recorders
Plays the backend of the protocol by which a digital video recorder (DVR)
exports its recordings: drives the recorder that connects through an export,
misbehaves on purpose where a switch says so, and logs all it sees.

This package has the harness, and a service that runs it.")
foreach(script postinst prerm postrm)
  list(APPEND CPACK_DEBIAN_HARNESS_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/deb/${script})
endforeach()

set(CPACK_DEBIAN_RIG_PACKAGE_NAME velloran-rig)
set(CPACK_DEBIAN_RIG_PACKAGE_SECTION net)
set(CPACK_DEBIAN_RIG_PACKAGE_RECOMMENDS "python3, tshark")
set(CPACK_DEBIAN_RIG_PACKAGE_SUGGESTS "velloran, wireshark")
set(CPACK_DEBIAN_RIG_DESCRIPTION "companion tools of the velloran test harness
Stands beside velloran, which plays the backend of the protocol by which a
digital video recorder (DVR) exports its recordings.

This package has velloran-rig, which plays a recorder with chosen defects and
judges real ones by the harness's log, a dissector of the protocol for
Wireshark, and the documents of the protocol.")

include(CPack)
