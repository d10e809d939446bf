# Runs PROGRAM in the new folder SCRATCH; it must end with 0, print what the file EXPECTED holds, and nothing to
# standard error.
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})
execute_process(COMMAND ${PROGRAM} WORKING_DIRECTORY ${SCRATCH} RESULT_VARIABLE result
                OUTPUT_FILE printed.txt ERROR_VARIABLE errors)
if(NOT result STREQUAL "0" OR NOT errors STREQUAL "")
    message(FATAL_ERROR "${PROGRAM} ended with ${result}\n${errors}")
endif()
# As bytes: variables would lose semicolons and brackets.
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SCRATCH}/printed.txt ${EXPECTED} RESULT_VARIABLE different)
if(NOT different STREQUAL "0")
    file(READ ${SCRATCH}/printed.txt printed)
    message(FATAL_ERROR "${SCRATCH}/printed.txt differs from ${EXPECTED}:\n${printed}")
endif()
