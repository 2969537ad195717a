# Skia_FOUND and its targets, as VELMAR_SKIA asks. Its calls are made in the current OpenGL context, so there is no Skia
# without OpenGL.

set(Skia_FOUND FALSE)
# Another recipe is another library.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${CMAKE_CURRENT_LIST_DIR}/skia/CMakeLists.txt ${CMAKE_CURRENT_LIST_DIR}/skia/Build.cmake)
if(VELMAR_SKIA AND VELMAR_GL)
    if(VELMAR_SKIA STREQUAL "AUTO")
        find_package(Skia QUIET MODULE)
    else()
        execute_process(COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_LIST_DIR}/skia/Build.cmake
                        COMMAND_ERROR_IS_FATAL ANY)
        find_package(Skia REQUIRED MODULE)
    endif()
endif()
if(Skia_FOUND) # when the user empties the cache, all is looked at anew
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${Skia_INCLUDE_DIR}/core/SkCanvas.h)
endif()
