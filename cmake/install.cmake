# Installation: library, headers (in a folder of their own that is on the target's include path), and the files by which
# CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

set(NORVIK2D_CONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Norvik2D")

install(
    TARGETS norvik2d
    EXPORT Norvik2DTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/norvik2d"
)
install(EXPORT Norvik2DTargets NAMESPACE Norvik2D:: DESTINATION "${NORVIK2D_CONFIG_DIR}")

configure_package_config_file(
    cmake/Norvik2DConfig.cmake.in
    "${PROJECT_BINARY_DIR}/Norvik2DConfig.cmake"
    INSTALL_DESTINATION "${NORVIK2D_CONFIG_DIR}"
)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/Norvik2DConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
    FILES "${PROJECT_BINARY_DIR}/Norvik2DConfig.cmake" "${PROJECT_BINARY_DIR}/Norvik2DConfigVersion.cmake"
    DESTINATION "${NORVIK2D_CONFIG_DIR}"
)

# A shared library brings GMP itself; who links a static one must name it.
set(NORVIK2D_PC_REQUIRES "")
set(NORVIK2D_PC_LIBS "")
set(NORVIK2D_PC_CFLAGS "")
if(NORVIK2D_LIBRARY_TYPE STREQUAL "STATIC")
    set(NORVIK2D_PC_REQUIRES "gmp")
    set(NORVIK2D_PC_LIBS "-pthread")
    set(NORVIK2D_PC_CFLAGS " -DNORVIK2D_STATIC_DEFINE")
    install(FILES cmake/FindGMP.cmake DESTINATION "${NORVIK2D_CONFIG_DIR}")
endif()

# The way from the .pc file's folder to the prefix: an installed tree may be moved, or staged elsewhere.
file(
    RELATIVE_PATH NORVIK2D_PC_PREFIX
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    "${CMAKE_INSTALL_PREFIX}"
)
string(REGEX REPLACE "/$" "" NORVIK2D_PC_PREFIX "${NORVIK2D_PC_PREFIX}")
configure_file(cmake/norvik2d.pc.in "${PROJECT_BINARY_DIR}/norvik2d.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/norvik2d.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

if(NORVIK2D_BUILD_TOOLS)
    file(RELATIVE_PATH libraryFromTool "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(norvik2d_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${libraryFromTool}")
    install(TARGETS norvik2d_tool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
