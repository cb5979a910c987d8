# Programs that check log texts live in a folder of their own, beside a logging library that records every line.
set(ZEL_RECORDED_FOLDER ${CMAKE_BINARY_DIR}/bin/recorded)

# zel_recorded_test(NAME SOURCES... [LINK targets...] [DEPENDS targets...]): as zel_test; the program finds the
# recording library, which it reads through tests/support/RecordedLog.h. Needs zel_logging and zel_platform in LINK.
function(zel_recorded_test name)
    zel_test(${name} ${ARGN})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${ZEL_RECORDED_FOLDER})
    add_dependencies(${name} zel_recording_log)
endfunction()

# A check that lacks its tool is reported as skipped, with the reason.
function(zel_skip_test name reason)
    add_test(NAME ${name} COMMAND ${CMAKE_COMMAND} -E echo "SKIPPED: ${reason}")
    set_tests_properties(${name} PROPERTIES SKIP_REGULAR_EXPRESSION "SKIPPED: ")
endfunction()
