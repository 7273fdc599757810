# Installs the built project into a folder and uses it from there as a CMake package and through pkg-config.
# Expects BUILD, WORK, and EXAMPLES, the folder of the programs.

function(run)
    cmake_parse_arguments(PARSE_ARGV 0 run "" "OUTPUT" "COMMAND")
    execute_process(COMMAND ${run_COMMAND} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    if(run_OUTPUT)
        set(${run_OUTPUT} "${output}" PARENT_SCOPE)
    endif()
endfunction()

set(host_says "y = 2.75, dy/dp1 = 1, dy/dp2 = 0.5, dy/dp3 = 0.25\n")
set(fit_c_says "converged
y0 = 1.0149 +- 0.064
xc = 4.3305 +- 0.025
w = 1.053 +- 0.032
A = 5.0639 +- 0.12
")
set(fit_cpp_says "converged
a = 7.5518 +- 0.19
b = 0.40921 +- 0.028
c = 1.4993 +- 0.2
t_half = 1.6939 +- 0.12
")
function(expect program folder)
    run(COMMAND ${folder}/${program} OUTPUT output)
    if(NOT output STREQUAL ${program}_says)
        message(FATAL_ERROR "${folder}/${program} says: ${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)
run(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} OUTPUT ignored)

run(COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${prefix}
    -DEXAMPLES=${EXAMPLES} OUTPUT ignored)
run(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build OUTPUT ignored)

file(GLOB_RECURSE pc ${prefix}/curvebank.pc)
get_filename_component(pc_folder ${pc} DIRECTORY)
get_filename_component(library_folder ${pc_folder} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_folder})
file(MAKE_DIRECTORY ${WORK}/by_pkg_config)
function(compile program source package)
    run(COMMAND pkg-config --define-prefix --cflags --libs ${package} OUTPUT flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(COMMAND ${ARGN} -Wall -Wextra -Wpedantic -Werror ${EXAMPLES}/${source} -o ${WORK}/by_pkg_config/${program} ${flags}
        -Wl,-rpath,${library_folder})
endfunction()
compile(host host.c curvebank cc -std=c99)
compile(fit_c fit.c curvebank_fit cc -std=c99)
compile(fit_cpp fit.cpp curvebank_fit c++ -std=c++20)

foreach(folder build by_pkg_config)
    foreach(program host fit_c fit_cpp)
        expect(${program} ${WORK}/${folder})
    endforeach()
endforeach()

# What the fitting library shows is its doors, and nothing of what is inside.
file(GLOB library ${library_folder}/libcurvebank_fit.so)
run(COMMAND nm -D --defined-only --demangle ${library} OUTPUT symbols)
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
list(FILTER symbols EXCLUDE REGEX " curvebank_fit_[a-z_]+$")
list(FILTER symbols EXCLUDE REGEX
    " ((typeinfo|typeinfo name|vtable) for )?curvebank::fit::(Error|Model|fit\\(|band\\(|word\\()")
if(symbols)
    message(FATAL_ERROR "libcurvebank_fit also exports ${symbols}")
endif()

file(GLOB program ${prefix}/bin/curvebank)
if(program)
    run(COMMAND ${program} eval Parabola --params 1,2,3 --x 0.5 --csv OUTPUT output)
    if(NOT output STREQUAL "x,y\n0.5,2.75\n")
        message(FATAL_ERROR "the installed program says: ${output}")
    endif()
endif()
