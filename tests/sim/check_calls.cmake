# cmake -DNM=... -DARCHIVES=... -P check_calls.cmake: ends the build when the product makes a call that is neither the
# set's nor harmless, and would reach the machine that runs the tests.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/harmless.txt harmless)
execute_process(COMMAND ${NM} --defined-only --extern-only --format=posix ${ARCHIVES} OUTPUT_VARIABLE defined
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${NM} --undefined-only --format=posix ${ARCHIVES} OUTPUT_VARIABLE called
    COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+ U " called "${called}")
list(REMOVE_DUPLICATES called)

foreach(line IN LISTS called)
    string(REGEX REPLACE " .*" "" name "${line}")
    string(FIND "\n${defined}" "\n${name} " known)
    foreach(pattern IN LISTS harmless)
        if(name MATCHES "^${pattern}$")
            set(known 0)
        endif()
    endforeach()
    if(known EQUAL -1)
        list(APPEND unknown ${name})
    endif()
endforeach()
if(unknown)
    message(FATAL_ERROR "The product calls ${unknown}: let the simulated set answer it (tests/sim/calls.txt), or, when it "
        "touches nothing outside of the process, add it to tests/sim/harmless.txt.")
endif()
