# Headers, CMake package and pkg-config files. Targets install themselves (vx_target).

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VelmarBase)

set(header_folders base engine mesh material shader draw)
if(VELMAR_TEXT)
    list(APPEND header_folders text)
endif()
if(TARGET VelmarHost)
    list(APPEND header_folders host)
endif()
foreach(folder ${header_folders})
    install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmar
            FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE PATTERN "kernel" EXCLUDE PATTERN "platform" EXCLUDE)
endforeach()
install(DIRECTORY ${PROJECT_BINARY_DIR}/generated/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmar
        FILES_MATCHING PATTERN "*.h")

install(EXPORT VelmarBaseTargets NAMESPACE Velmar:: DESTINATION ${package_dir})
configure_package_config_file(cmake/VelmarBaseConfig.cmake.in ${PROJECT_BINARY_DIR}/VelmarBaseConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelmarBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelmarBaseConfig.cmake ${PROJECT_BINARY_DIR}/VelmarBaseConfigVersion.cmake
        DESTINATION ${package_dir})
if(VELMAR_OPENSUBDIV AND NOT BUILD_SHARED_LIBS)
    install(FILES cmake/FindOpenSubdiv.cmake DESTINATION ${package_dir})
endif()
if(VELMAR_TEXT AND NOT BUILD_SHARED_LIBS)
    install(FILES cmake/FindFTGL.cmake DESTINATION ${package_dir})
endif()

# For builds without CMake: one .pc file, its library flags naming what was built.
set(pc_libs "-lVelmarBase -lFenwickBase")
if(TARGET VelmarHost)
    set(pc_libs "-lVelmarHost ${pc_libs}")
endif()
set(pc_private "")
set(pc_cflags "")
if(VELMAR_TEXT)
    set(pc_cflags " -DVELMAR_WITH_TEXT")
endif()
if(NOT BUILD_SHARED_LIBS)
    set(pc_private "Requires.private: zlib pugixml")
    if(TARGET VelmarHost)
        string(APPEND pc_private " egl libpng tinyobjloader")
    endif()
    if(VELMAR_GL OR TARGET VelmarHost)
        string(APPEND pc_private " opengl glew")
    endif()
    if(VELMAR_TEXT)
        string(APPEND pc_private " freetype2 ftgl glu")
    endif()
    if(VELMAR_OPENSUBDIV)
        string(APPEND pc_private "\nLibs.private: -losdCPU") # comes without a .pc file
    endif()
endif()
# Relative to the file itself, so that an installed tree may be moved or get its prefix at install time.
file(RELATIVE_PATH pc_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/velmarbase.pc.in ${PROJECT_BINARY_DIR}/velmarbase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmarbase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
