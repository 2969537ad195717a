# FTGL, which comes without a CMake package: FTGL_FOUND, target FTGL::FTGL.

find_path(FTGL_INCLUDE_DIR FTGL/ftgl.h)
find_library(FTGL_LIBRARY NAMES ftgl)
mark_as_advanced(FTGL_INCLUDE_DIR FTGL_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FTGL REQUIRED_VARS FTGL_LIBRARY FTGL_INCLUDE_DIR)

if(FTGL_FOUND AND NOT TARGET FTGL::FTGL)
    add_library(FTGL::FTGL UNKNOWN IMPORTED)
    set_target_properties(FTGL::FTGL PROPERTIES
        IMPORTED_LOCATION ${FTGL_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${FTGL_INCLUDE_DIR})
endif()
