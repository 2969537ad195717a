# One way to declare a target, so that include root, language level, warnings and visibility are said once.

include(GenerateExportHeader)

# Project-wide compile settings, carried by an interface target and never installed.
add_library(velmar_settings INTERFACE)
target_compile_features(velmar_settings INTERFACE cxx_std_20)
if(MSVC)
    target_compile_options(velmar_settings INTERFACE /W4 /permissive- /utf-8 /Zc:preprocessor $<$<BOOL:${VELMAR_WERROR}>:/WX>)
    target_compile_definitions(velmar_settings INTERFACE _USE_MATH_DEFINES NOMINMAX _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(velmar_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                           $<$<BOOL:${VELMAR_WERROR}>:-Werror>)
    # The same bits on every machine: no silent fusing of a * b + c.
    target_compile_options(velmar_settings INTERFACE -ffp-contract=off)
endif()
if(VELMAR_SANITIZE)
    target_compile_options(velmar_settings INTERFACE -fsanitize=${VELMAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(velmar_settings INTERFACE -fsanitize=${VELMAR_SANITIZE})
endif()

# vx_target(NAME [LIBRARY|PROGRAM] FILES f... [USES public...] [PRIVATE private...])
#
# LIBRARY also gets a generated export header (<Name>Export.h), hidden symbols, an alias Velmar::NAME and install rules.
function(vx_target name)
    cmake_parse_arguments(ARG "LIBRARY;PROGRAM" "EXPORT_MACRO;EXPORT_HEADER" "FILES;USES;PRIVATE" ${ARGN})
    if(ARG_LIBRARY)
        add_library(${name} ${ARG_FILES})
        add_library(Velmar::${name} ALIAS ${name})
        set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                              VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
        generate_export_header(${name} EXPORT_MACRO_NAME ${ARG_EXPORT_MACRO}
                               EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/generated/${ARG_EXPORT_HEADER})
        if(NOT BUILD_SHARED_LIBS)
            string(TOUPPER ${name} upper)
            target_compile_definitions(${name} PUBLIC ${upper}_STATIC_DEFINE)
        endif()
        target_include_directories(${name} PUBLIC
            $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/generated>
            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/velmar>)
        target_compile_features(${name} PUBLIC cxx_std_20)
        install(TARGETS ${name} EXPORT VelmarBaseTargets
                LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
                RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    else()
        add_executable(${name} ${ARG_FILES})
        target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    endif()
    target_link_libraries(${name} PUBLIC ${ARG_USES} PRIVATE $<BUILD_INTERFACE:velmar_settings> ${ARG_PRIVATE})
endfunction()

# vx_sources(TARGET file...): adds the files of the calling folder to a target declared elsewhere.
function(vx_sources target)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(${target} PRIVATE ${ARGN})
endfunction()
