# Runs one example in a fresh directory and compares what it prints, byte for byte.
#   cmake -D PROGRAM=... -D EXPECTED=... -D DIRECTORY=... -D DATA=... -P run_example.cmake
# EXPECTED is the path of the expected files without their endings: .out and, if the example has them, .err (standard
# error; without it nothing is expected there) and .in (standard input).
file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${DIRECTORY}/work)
file(GLOB samples ${DATA}/*)
file(COPY ${samples} DESTINATION ${DIRECTORY}/work)

set(input /dev/null)
if(EXISTS ${EXPECTED}.in)
    set(input ${EXPECTED}.in)
endif()
execute_process(COMMAND ${PROGRAM}
    WORKING_DIRECTORY ${DIRECTORY}/work
    INPUT_FILE ${input}
    OUTPUT_FILE ${DIRECTORY}/printed.out
    ERROR_FILE ${DIRECTORY}/printed.err
    RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    file(READ ${DIRECTORY}/printed.err errors)
    message(FATAL_ERROR "${PROGRAM} ended with ${status}\n${errors}")
endif()

foreach(stream out err)
    set(expected ${EXPECTED}.${stream})
    if(NOT EXISTS ${expected})
        set(expected /dev/null)
    endif()
    execute_process(COMMAND diff -u ${expected} ${DIRECTORY}/printed.${stream} RESULT_VARIABLE differs)
    if(differs)
        message(FATAL_ERROR "The output differs from ${expected}.")
    endif()
endforeach()
