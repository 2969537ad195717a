# OpenSubdiv's headers and its CPU library: OpenSubdiv_FOUND, OpenSubdiv_VERSION, target OpenSubdiv::osdCPU.
#
# The library's own CMake package is passed over on purpose: as Debian ships it, its targets name static libraries that
# are not in the package, and merely finding it stops the configuration.

find_path(OpenSubdiv_INCLUDE_DIR opensubdiv/far/topologyRefiner.h)
find_library(OpenSubdiv_LIBRARY NAMES osdCPU)
mark_as_advanced(OpenSubdiv_INCLUDE_DIR OpenSubdiv_LIBRARY)

if(OpenSubdiv_INCLUDE_DIR AND EXISTS ${OpenSubdiv_INCLUDE_DIR}/opensubdiv/version.h)
    file(STRINGS ${OpenSubdiv_INCLUDE_DIR}/opensubdiv/version.h opensubdiv_version REGEX "define OPENSUBDIV_VERSION +v")
    string(REGEX REPLACE ".* v([0-9]+)_([0-9]+)_([0-9]+).*" "\\1.\\2.\\3" OpenSubdiv_VERSION "${opensubdiv_version}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenSubdiv REQUIRED_VARS OpenSubdiv_LIBRARY OpenSubdiv_INCLUDE_DIR
                                  VERSION_VAR OpenSubdiv_VERSION)

if(OpenSubdiv_FOUND AND NOT TARGET OpenSubdiv::osdCPU)
    add_library(OpenSubdiv::osdCPU UNKNOWN IMPORTED)
    set_target_properties(OpenSubdiv::osdCPU PROPERTIES
        IMPORTED_LOCATION ${OpenSubdiv_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${OpenSubdiv_INCLUDE_DIR})
endif()
