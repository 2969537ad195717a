# velmar_skia_targets(INCLUDE_DIR [LIBRARY]): Skia::Headers for what only includes and, where a library is given,
# Skia::Skia for what links, which needs Freetype::Freetype.
function(velmar_skia_targets include_dir)
    add_library(Skia::Headers INTERFACE IMPORTED)
    set(dirs ${include_dir})
    foreach(folder config core effects gpu gpu/gl ports private utils)
        list(APPEND dirs ${include_dir}/${folder})
    endforeach()
    set_target_properties(Skia::Headers PROPERTIES
        # As the library was built: its headers ask.
        INTERFACE_COMPILE_DEFINITIONS "SK_SUPPORT_LEGACY_NEW_SURFACE_API;SK_RELEASE"
        INTERFACE_INCLUDE_DIRECTORIES "${dirs}")
    if(ARGC GREATER 1)
        add_library(Skia::Skia STATIC IMPORTED)
        set_target_properties(Skia::Skia PROPERTIES
            IMPORTED_LOCATION ${ARGV1}
            INTERFACE_LINK_LIBRARIES "Skia::Headers;Freetype::Freetype;${CMAKE_DL_LIBS}")
    endif()
endfunction()
