# cmake -P Build.cmake: fetches the sources of Skia, checks them, builds the library into the user's cache. Does nothing
# when it is there. Minutes the first time; needs npm, Ninja and FreeType's headers.
cmake_minimum_required(VERSION 3.23)
include(${CMAKE_CURRENT_LIST_DIR}/Folder.cmake)

set(package skia.cc)
set(version 1.0.0)
set(checksum c72390c31d3b09f899efb36cdc6f9458cc723eb8d1d1851a99b465ed6633036bb61fc047243f4a376f28ffbf728a56a45d4139ae5c2fbaead7b94460fdf827b8)

velmar_skia_folder(folder)
if(EXISTS ${folder}/include)
    return()
endif()

# A place of this process alone: two builds at the same time do the work twice and leave one result.
string(RANDOM LENGTH 8 mark)
set(work ${folder}.${mark})
file(MAKE_DIRECTORY ${work})

function(step what)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${work}
                    RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT code EQUAL 0)
        file(REMOVE_RECURSE ${work})
        message(FATAL_ERROR "Skia: ${what} failed (${code})\n${output}")
    endif()
endfunction()

find_program(npm NAMES npm npm.cmd)
if(NOT npm)
    file(REMOVE_RECURSE ${work})
    message(FATAL_ERROR "Skia: its sources are fetched by npm, which is not there")
endif()
step("fetching ${package} ${version}" ${npm} pack --silent ${package}@${version})
set(archive ${work}/${package}-${version}.tgz)
file(SHA512 ${archive} sum)
if(NOT sum STREQUAL checksum)
    file(REMOVE_RECURSE ${work})
    message(FATAL_ERROR "Skia: ${package}-${version}.tgz is not the file it should be: SHA-512 ${sum}")
endif()
file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${work})

set(launcher)
find_program(ccache ccache)
if(ccache)
    set(launcher -DCMAKE_CXX_COMPILER_LAUNCHER=${ccache})
endif()
message(STATUS "Skia: building into ${folder}; once, some minutes")
step("configuring" ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/build -G Ninja ${launcher}
     -DCMAKE_BUILD_TYPE=Release -DSKIA_SOURCE=${work}/package -DCMAKE_INSTALL_PREFIX=${work}/result
     -DCMAKE_INSTALL_LIBDIR=lib)
step("building" ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${work} ${CMAKE_COMMAND} --build ${work}/build)
step("installing" ${CMAKE_COMMAND} --install ${work}/build)
file(RENAME ${work}/result ${folder} RESULT taken) # fails when the other one of two builds was faster
file(REMOVE_RECURSE ${work})
if(NOT EXISTS ${folder}/include)
    message(FATAL_ERROR "Skia: ${folder} cannot be written: ${taken}")
endif()
