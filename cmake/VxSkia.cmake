# Skia_FOUND and its targets, as VELMAR_SKIA asks. Its calls are made in the current OpenGL context, so there is no Skia
# without OpenGL.

set(Skia_FOUND FALSE)
if(VELMAR_SKIA AND VELMAR_GL)
    if(VELMAR_SKIA STREQUAL "AUTO")
        find_package(Skia QUIET MODULE)
    else()
        execute_process(COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_LIST_DIR}/skia/Build.cmake
                        COMMAND_ERROR_IS_FATAL ANY)
        find_package(Skia REQUIRED MODULE)
    endif()
endif()
