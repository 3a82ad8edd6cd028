# Runs fileio-convert on the bundled sample: the sample must be exactly what the tool writes,
# and converting it to binary and back must give the same bytes.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

function(run_tool)
    execute_process(COMMAND ${EMULATOR} ${TOOL} ${ARGN}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    string(JOIN " " arguments ${ARGN})
    message(STATUS "fileio-convert ${arguments}\n${output}${errors}")
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "fileio-convert ${arguments} failed (${result})")
    endif()
endfunction()

function(expect_same_bytes a b)
    file(READ ${a} bytes_a HEX)
    file(READ ${b} bytes_b HEX)
    if(NOT bytes_a STREQUAL bytes_b)
        message(FATAL_ERROR "${a} and ${b} differ")
    endif()
endfunction()

run_tool(--sample ${WORK_DIR}/sample.mdl)
expect_same_bytes(${SAMPLE} ${WORK_DIR}/sample.mdl)

run_tool(${SAMPLE} ${WORK_DIR}/robot.bin)
file(READ ${WORK_DIR}/robot.bin marker LIMIT 1)
if(NOT marker STREQUAL "B")
    message(FATAL_ERROR "the binary file does not start with its marker")
endif()
run_tool(${WORK_DIR}/robot.bin ${WORK_DIR}/robot.mdl)
expect_same_bytes(${SAMPLE} ${WORK_DIR}/robot.mdl)
