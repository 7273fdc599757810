# Builds the library against a numcore of somebody else's and shows that the models call its functions.
# Expects SOURCE and WORK.

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(output "${output}" PARENT_SCOPE)
endfunction()

set(here ${CMAKE_CURRENT_LIST_DIR})
file(MAKE_DIRECTORY ${WORK})
run(cc -shared -fPIC ${here}/fake_numcore.c -o ${WORK}/libfakenumcore.so)
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -DCURVEBANK_NUMCORE=${WORK}/libfakenumcore.so
    -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF)
run(${CMAKE_COMMAND} --build ${WORK}/build --target curvebank)
run(cc ${here}/caller.c -o ${WORK}/caller -I${WORK}/build/include -L${WORK}/build -lcurvebank
    -Wl,-rpath,${WORK}/build -Wl,-rpath-link,${WORK})
run(${WORK}/caller)
if(NOT output STREQUAL [[
NormalCDF 1002 1002 -0.0269955
LognormalCDF 1000 1000 -0.398942
GammaCDF 2532 2532 10
WeibullCDF 3332 3332 -4332
Poisson 0.367879 0 0
]])
    message(FATAL_ERROR "unexpected output: ${output}")
endif()
