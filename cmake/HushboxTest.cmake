# What the sanitizers need to know; every run of ours gets it.
set(HUSHBOX_TEST_ENVIRONMENT
  "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:ignore_noninstrumented_modules=1:history_size=4;UBSAN_OPTIONS=print_stacktrace=1;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")

# hushbox_add_test(NAME TARGET [FILTER <gtest filter>] [TIMEOUT <seconds>] [REAL_SERVERS])
# Registers one run of a GoogleTest binary. Its results go to results/NAME.xml in the build folder,
# where the closing line of script/test is counted from. Runs with REAL_SERVERS have the machine
# to themselves: their deadlines are in real time.
function(hushbox_add_test NAME TARGET)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "REAL_SERVERS" "FILTER;TIMEOUT" "")
  if(NOT ARG_FILTER)
    set(ARG_FILTER "*")
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  add_test(NAME ${NAME}
    COMMAND ${TARGET} --gtest_filter=${ARG_FILTER}
      --gtest_output=xml:${CMAKE_BINARY_DIR}/results/${NAME}.xml)
  set_tests_properties(${NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "${HUSHBOX_TEST_ENVIRONMENT}")
  if(ARG_REAL_SERVERS)
    set_tests_properties(${NAME} PROPERTIES RUN_SERIAL ON)
  endif()
endfunction()

# hushbox_add_checks(NAME [TIMEOUT <seconds>] COMMAND <command> ...)
# Registers one run of a script that tells each of its checks on a line of its own: "ok NAME",
# "not ok NAME", or "skip NAME: reason". script/test counts them like the tests of a binary.
function(hushbox_add_checks NAME)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "TIMEOUT" "COMMAND")
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  add_test(NAME ${NAME}
    COMMAND ${PROJECT_SOURCE_DIR}/cmake/run-checks ${CMAKE_BINARY_DIR}/results/${NAME}.xml
      ${ARG_COMMAND})
  set_tests_properties(${NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
