# Run by ctest: any failing step fails the test with the step's own output.
set(stage ${BUILD}/install-test)
file(REMOVE_RECURSE ${stage})

function(step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed (${result}): ${ARGN}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

step(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${stage}/prefix)
step(${CMAKE_COMMAND} -S ${SOURCE}/outside -B ${stage}/build -G Ninja -DCMAKE_PREFIX_PATH=${stage}/prefix
     -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_BUILD_TYPE=${CONFIG} -DSANITIZE=${SANITIZE})
step(${CMAKE_COMMAND} --build ${stage}/build)
if(EXISTS ${stage}/build/outside_host)
    step(${stage}/build/outside_host)
endif()
step(${stage}/build/outside)
if(NOT output MATCHES "12 edges")
    message(FATAL_ERROR "a cube has 12 edges, but the program printed: ${output}")
endif()

# The same file without CMake.
find_program(pkgconfig pkg-config)
if(pkgconfig AND NOT SANITIZE)
    set(ENV{PKG_CONFIG_PATH} ${stage}/prefix/${LIBDIR}/pkgconfig)
    step(${pkgconfig} --cflags --libs velmarbase)
    string(STRIP "${output}" flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    step(${CXX} -std=c++20 ${SOURCE}/outside/main.cpp -o ${stage}/plain ${flags} -Wl,-rpath,${stage}/prefix/${LIBDIR})
    step(${stage}/plain)
endif()
