# Finds the GNU multiple precision library and makes the target GMP::GMP. The variables GMP_INCLUDE_DIR and
# GMP_LIBRARIES are named as other packages' finders name them, so that both can live in one project.
find_path(GMP_INCLUDE_DIR gmp.h DOC "Folder of gmp.h")
find_library(GMP_LIBRARIES gmp DOC "The GMP library")
mark_as_advanced(GMP_INCLUDE_DIR GMP_LIBRARIES)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
    GMP
    REQUIRED_VARS GMP_LIBRARIES GMP_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "(Debian: apt-get install libgmp-dev)"
)

if(GMP_FOUND AND NOT TARGET GMP::GMP)
    add_library(GMP::GMP UNKNOWN IMPORTED)
    set_target_properties(
        GMP::GMP
        PROPERTIES IMPORTED_LOCATION "${GMP_LIBRARIES}" INTERFACE_INCLUDE_DIRECTORIES "${GMP_INCLUDE_DIR}"
    )
endif()
