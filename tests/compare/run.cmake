# Compares the library with the altered one: each altered thing is found, and nothing else.
# Expects RUN (the program, with what runs it), REAL and ALTERED.

execute_process(COMMAND ${RUN} ${REAL} ${ALTERED} --calls 2000 OUTPUT_VARIABLE output RESULT_VARIABLE exit_code)
if(NOT exit_code EQUAL 1)
    message(FATAL_ERROR "exit ${exit_code} where there are differences:\n${output}")
endif()
# Of each model its name and what differs in its first call remain.
string(REGEX REPLACE "\r" "" found "${output}")
string(REGEX REPLACE "\n    (flags|x =|p =)[^\n]*" "" found "${found}")
string(REGEX REPLACE ": [0-9]+ of 2000 calls differ[^\n]*\n   |: [^\n]*, now [^\n]*" "" found "${found}")
string(REGEX REPLACE "\n[0-9]+ models[^\n]*" "" found "${found}")
if(NOT found STREQUAL [[
Hill y[3]
Line y[1]
Parabola dy[3]
Cubic x[1]
Poly4 result
Poly5 errno
Plane *perr
]])
    message(FATAL_ERROR "unexpected output:\n${found}\nfrom\n${output}")
endif()
