# Packages for Debian (`make package`): the shared library, what one compiles with, and the program.
set(NORVIK2D_RUNTIME_PACKAGE "libnorvik2d${PROJECT_VERSION_MAJOR}")
set(NORVIK2D_DEBIAN_VERSION "${PROJECT_VERSION}-1")
set(NORVIK2D_DEBIAN_DATE "Sat, 21 Nov 2026 12:00:00 +0000")
set(CPACK_PACKAGE_CONTACT "Norvik2D maintainers <maintainers@norvik2d.invalid>" CACHE STRING "Who answers for packages")

set(debianFiles "${PROJECT_BINARY_DIR}/debian")
configure_file(cmake/debian/changelog.in "${debianFiles}/changelog.Debian" @ONLY)
configure_file(cmake/debian/shlibs.in "${debianFiles}/shlibs" @ONLY)
configure_file(CHANGELOG.md "${debianFiles}/changelog" COPYONLY)
foreach(text IN ITEMS changelog changelog.Debian)
    execute_process(COMMAND gzip -9nkf "${debianFiles}/${text}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# What packages have beyond an installation by hand: texts about them.
macro(norvik2d_add_package component name section synopsis text)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${synopsis}\n${text}")
    install(
        FILES cmake/debian/copyright "${debianFiles}/changelog.gz" "${debianFiles}/changelog.Debian.gz"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${name}"
        COMPONENT ${component}
        EXCLUDE_FROM_ALL
    )
endmacro()

set(about
    "libnorvik2d triangulates points and segments in the plane, exactly for\n\
double coordinates: Delaunay triangulations, constraints, zones and their set\n\
operations, cuts, and meshes of good shape.\n.\nThis package contains"
)
norvik2d_add_package(
    runtime ${NORVIK2D_RUNTIME_PACKAGE} libs
    "exact two-dimensional Delaunay triangulation - library" "${about} the shared library."
)
norvik2d_add_package(
    development libnorvik2d-dev libdevel
    "exact two-dimensional Delaunay triangulation - headers" "${about} what programs are compiled with."
)
if(NORVIK2D_BUILD_TOOLS)
    norvik2d_add_package(
        tools norvik2d science
        "exact two-dimensional Delaunay triangulation - program"
        "${about} norvik2d, a program for the command line."
    )
endif()

# Each package has a synopsis of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION "${NORVIK2D_DEBIAN_VERSION}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${debianFiles}/shlibs" "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
include(CPack)
