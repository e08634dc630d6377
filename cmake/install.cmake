# Installation: library, headers (in a folder of their own that is on the target's include path), and the files by which
# CMake and pkg-config find them. The components are those of the packages.
include(CMakePackageConfigHelpers)

set(NORVIK2D_CONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Norvik2D")

install(
    TARGETS norvik2d
    EXPORT Norvik2DTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/norvik2d" COMPONENT development
)
install(
    EXPORT Norvik2DTargets
    NAMESPACE Norvik2D::
    DESTINATION "${NORVIK2D_CONFIG_DIR}"
    COMPONENT development
)

configure_package_config_file(
    cmake/Norvik2DConfig.cmake.in
    "${PROJECT_BINARY_DIR}/Norvik2DConfig.cmake"
    INSTALL_DESTINATION "${NORVIK2D_CONFIG_DIR}"
)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/Norvik2DConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
    FILES "${PROJECT_BINARY_DIR}/Norvik2DConfig.cmake" "${PROJECT_BINARY_DIR}/Norvik2DConfigVersion.cmake"
    DESTINATION "${NORVIK2D_CONFIG_DIR}"
    COMPONENT development
)

# A shared library brings GMP itself; who links a static one must name it.
set(NORVIK2D_PC_REQUIRES "")
set(NORVIK2D_PC_LIBS "")
set(NORVIK2D_PC_CFLAGS "")
if(NORVIK2D_LIBRARY_TYPE STREQUAL "STATIC")
    set(NORVIK2D_PC_REQUIRES "gmp")
    set(NORVIK2D_PC_LIBS "-pthread")
    set(NORVIK2D_PC_CFLAGS " -DNORVIK2D_STATIC_DEFINE")
    install(FILES cmake/FindGMP.cmake DESTINATION "${NORVIK2D_CONFIG_DIR}" COMPONENT development)
endif()

# The way from the .pc file's folder to the prefix: an installed tree may be moved, or staged elsewhere.
file(
    RELATIVE_PATH NORVIK2D_PC_PREFIX
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    "${CMAKE_INSTALL_PREFIX}"
)
string(REGEX REPLACE "/$" "" NORVIK2D_PC_PREFIX "${NORVIK2D_PC_PREFIX}")
configure_file(cmake/norvik2d.pc.in "${PROJECT_BINARY_DIR}/norvik2d.pc" @ONLY)
install(
    FILES "${PROJECT_BINARY_DIR}/norvik2d.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development
)

if(NORVIK2D_BUILD_TOOLS)
    # Below /usr the loader finds the library anyway; elsewhere the program brings the way to it.
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        file(RELATIVE_PATH libraryFromTool "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
        set_target_properties(norvik2d_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${libraryFromTool}")
    endif()
    install(TARGETS norvik2d_tool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)

    if(NOT CMAKE_CROSSCOMPILING)
        set(manPage "${PROJECT_BINARY_DIR}/norvik2d.1.gz")
        add_custom_command(
            OUTPUT "${manPage}"
            COMMAND "${PROJECT_SOURCE_DIR}/cmake/manPage.sh" $<TARGET_FILE:norvik2d_tool> "${manPage}"
            DEPENDS norvik2d_tool "${PROJECT_SOURCE_DIR}/cmake/manPage.sh"
            COMMENT "Writing the manual page of norvik2d"
            VERBATIM
        )
        add_custom_target(norvik2d_man ALL DEPENDS "${manPage}")
        install(FILES "${manPage}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
    endif()
endif()
