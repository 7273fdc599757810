# Installs the built project into a folder and uses it from there as a CMake package and through pkg-config.
# Expects BUILD, WORK and HOST_SOURCE.

function(run)
    cmake_parse_arguments(PARSE_ARGV 0 run "" "OUTPUT" "COMMAND")
    execute_process(COMMAND ${run_COMMAND} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    if(run_OUTPUT)
        set(${run_OUTPUT} "${output}" PARENT_SCOPE)
    endif()
endfunction()

function(expect output)
    if(NOT output STREQUAL "y = 2.75, dy/dp1 = 1, dy/dp2 = 0.5, dy/dp3 = 0.25\n")
        message(FATAL_ERROR "unexpected output: ${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)
run(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} OUTPUT ignored)

run(COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${prefix}
    -DHOST_SOURCE=${HOST_SOURCE} OUTPUT ignored)
run(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build OUTPUT ignored)
run(COMMAND ${WORK}/build/consumer OUTPUT output)
expect("${output}")

file(GLOB_RECURSE pc ${prefix}/curvebank.pc)
get_filename_component(pc_folder ${pc} DIRECTORY)
get_filename_component(library_folder ${pc_folder} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_folder})
run(COMMAND pkg-config --define-prefix --cflags --libs curvebank OUTPUT flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(COMMAND cc -std=c99 -Wall -Wextra -Wpedantic -Werror ${HOST_SOURCE} -o ${WORK}/by_pkg_config ${flags}
    -Wl,-rpath,${library_folder})
run(COMMAND ${WORK}/by_pkg_config OUTPUT output)
expect("${output}")

file(GLOB program ${prefix}/bin/curvebank)
if(program)
    run(COMMAND ${program} eval Parabola --params 1,2,3 --x 0.5 --csv OUTPUT output)
    if(NOT output STREQUAL "x,y\n0.5,2.75\n")
        message(FATAL_ERROR "the installed program says: ${output}")
    endif()
endif()
