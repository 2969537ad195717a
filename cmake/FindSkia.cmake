# Skia as skia/Build.cmake leaves it in the user's cache: Skia_FOUND, targets Skia::Skia and, for what only
# includes, Skia::Headers. Nothing is fetched here.

include(${CMAKE_CURRENT_LIST_DIR}/skia/Folder.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/SkiaTargets.cmake)
velmar_skia_folder(Skia_folder)
# Looked for anew each time: the user's cache is the user's to empty.
find_path(Skia_INCLUDE_DIR core/SkCanvas.h PATHS ${Skia_folder}/include NO_DEFAULT_PATH NO_CACHE)
find_library(Skia_LIBRARY skia PATHS ${Skia_folder}/lib NO_DEFAULT_PATH NO_CACHE)
find_package(Freetype QUIET)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Skia REQUIRED_VARS Skia_LIBRARY Skia_INCLUDE_DIR Freetype_FOUND)

if(Skia_FOUND AND NOT TARGET Skia::Skia)
    velmar_skia_targets(${Skia_INCLUDE_DIR} ${Skia_LIBRARY})
endif()
