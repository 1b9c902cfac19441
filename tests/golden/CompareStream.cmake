# Runs TOOL --check on SCENARIO and compares its standard output with EXPECTED.
# The output is kept in ACTUAL; a mismatch prints a unified diff of the two
# (both texts in full where no diff program exists). A first line
# "# policy-replay: OPTIONS" adds OPTIONS (such as --policy-map) to the run.
file(STRINGS ${SCENARIO} first LIMIT_COUNT 1)
set(options "")
if(first MATCHES "^# policy-replay: (.*)$")
  separate_arguments(options UNIX_COMMAND "${CMAKE_MATCH_1}")
endif()
execute_process(
  COMMAND ${TOOL} --check ${options} ${SCENARIO}
  OUTPUT_VARIABLE actual
  ERROR_VARIABLE errors
  RESULT_VARIABLE status)
file(WRITE ${ACTUAL} "${actual}")
if(NOT status EQUAL 0)
  message(NOTICE "${errors}")
  message(FATAL_ERROR "policy-replay --check ${options} ${SCENARIO} exited with ${status}")
endif()
file(READ ${EXPECTED} expected)
if(actual STREQUAL expected)
  return()
endif()
# Unformatted, so the diff reads as a diff.
message(NOTICE "the stream differs from the golden file (- expected, + actual):")
find_program(DIFF diff)
if(DIFF)
  execute_process(COMMAND ${DIFF} -u ${EXPECTED} ${ACTUAL})
else()
  message(NOTICE "expected:\n${expected}\nactual:\n${actual}")
endif()
message(FATAL_ERROR
  "${SCENARIO}: stream differs; after a deliberate change run tools/regen-golden.sh and review "
  "the diff")
