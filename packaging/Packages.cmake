# The Debian packages, made by "cpack" in a release build tree: parvela and parvela-local-service. docs/release.md tells how.
set(PARVELA_PACKAGE_REVISION "1" CACHE STRING "Revision of the Debian packages of this version")
set(PARVELA_PACKAGE_MAINTAINER "The Parvela authors <maintainers@parvela.example>" CACHE STRING
  "Maintainer of the Debian packages")

# The changelog speaks of the version that is packaged.
set(changelog "${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog")
file(STRINGS "${changelog}" latest LIMIT_COUNT 1)
set(expected "parvela (${PROJECT_VERSION}-${PARVELA_PACKAGE_REVISION}) ")
string(FIND "${latest}" "${expected}" position)
if(NOT position EQUAL 0)
  message(WARNING "packaging/debian/changelog begins with \"${latest}\" and not with \"${expected}\".")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${changelog}")

set(packages parvela parvela-local-service)
set(components application local_service)
foreach(package component IN ZIP_LISTS packages components)
  install(FILES debian/copyright DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}" COMPONENT ${component})
  parvela_install_compressed("${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}" debian/changelog NAME changelog.Debian
    COMPONENT ${component})
  install(FILES debian/${package}.lintian-overrides DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides"
    RENAME ${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME parvela)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${PARVELA_PRODUCTION_APP_URL}")
# Each package has its own; this one would stand in front of them.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "${PARVELA_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_COMPONENTS_GROUPING IGNORE)
# Folders as Debian's own packages have them, whatever the umask of whoever builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${PARVELA_PACKAGE_REVISION}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${PARVELA_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

# Recommended: a keyring, without which tokens are not kept, and what tells the desktop which links Parvela opens.
set(CPACK_DEBIAN_APPLICATION_PACKAGE_NAME parvela)
set(CPACK_DEBIAN_APPLICATION_PACKAGE_SECTION web)
# librsvg2-common draws the icons, which are SVG.
set(CPACK_DEBIAN_APPLICATION_PACKAGE_DEPENDS
  "default-dbus-session-bus | dbus-session-bus, hicolor-icon-theme, librsvg2-common")
set(CPACK_DEBIAN_APPLICATION_PACKAGE_RECOMMENDS
  "adwaita-icon-theme, desktop-file-utils, gnome-keyring | org.freedesktop.secrets, parvela-local-service, xdg-utils")
set(CPACK_DEBIAN_APPLICATION_DESCRIPTION "task board, native on the desktop
Parvela shows a team's task boards in windows and tabs of their own and adds
what a web page cannot do: windows that come back where they were, quick add
from anywhere and from the panel, a queue that keeps what was added while the
machine is offline, links that open tasks, and the parvela command, with which
scripts and terminals add, list, open and complete tasks.

It works with the hosted service, with a server of one's own, or with the
service in the package parvela-local-service.")

set(CPACK_DEBIAN_LOCAL_SERVICE_PACKAGE_NAME parvela-local-service)
set(CPACK_DEBIAN_LOCAL_SERVICE_PACKAGE_SOURCE parvela)
set(CPACK_DEBIAN_LOCAL_SERVICE_PACKAGE_SECTION web)
set(CPACK_DEBIAN_LOCAL_SERVICE_PACKAGE_SUGGESTS parvela)
set(CPACK_DEBIAN_LOCAL_SERVICE_DESCRIPTION "complete small Parvela service for one machine
The task board's web app and its API for one person or a small team on one
machine, with the whole workspace in one SQLite file. It answers on loopback
only and needs no other server.

It is started by the parvela command, by hand, or at login by its systemd
user unit, and works in any browser.")

include(CPack)
