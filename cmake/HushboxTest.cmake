# What the sanitizers are told; every run gets it.
set(HUSHBOX_TEST_ENVIRONMENT
  "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:ignore_noninstrumented_modules=1:history_size=4;UBSAN_OPTIONS=print_stacktrace=1;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")

# Everything that the runs labelled "quick" execute; script/test --quick builds only this.
if(NOT TARGET hushbox_quick_tests)
  add_custom_target(hushbox_quick_tests)
endif()

option(HUSHBOX_TESTS_IN_BATCHES "Compile several test sources at once, in a third of the time" ON)

# hushbox_compile_in_batches(TARGET): compiles the sources of tests a few at a time, so that the
# templates of GoogleTest are instantiated once per batch. Two sources of a target must not define the
# same name, in anonymous namespaces either.
function(hushbox_compile_in_batches TARGET)
  set_target_properties(${TARGET} PROPERTIES
    UNITY_BUILD ${HUSHBOX_TESTS_IN_BATCHES} UNITY_BUILD_BATCH_SIZE 5)
endfunction()

# hushbox_add_test(NAME TARGET [TIMEOUT <seconds>] [COST <seconds>] [SHARDS <count>] [REAL_SERVERS])
# Registers a GoogleTest binary: all its tests, in one run or divided among SHARDS runs that may go
# side by side. Each run writes results/NAME.xml in the build folder, from which script/test counts.
# Runs start in the order of their COST, longest first. A run without REAL_SERVERS is labelled
# "quick".
function(hushbox_add_test NAME TARGET)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "REAL_SERVERS" "TIMEOUT;COST;SHARDS" "")
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  if(NOT ARG_COST)
    set(ARG_COST 1)
  endif()
  if(NOT ARG_SHARDS)
    set(ARG_SHARDS 1)
  endif()
  if(ARG_REAL_SERVERS)
    set(label server)
  else()
    set(label quick)
    add_dependencies(hushbox_quick_tests ${TARGET})
  endif()
  foreach(shard RANGE 1 ${ARG_SHARDS})
    set(run ${NAME})
    set(environment ${HUSHBOX_TEST_ENVIRONMENT})
    if(ARG_SHARDS GREATER 1)
      set(run ${NAME}-${shard})
      math(EXPR index "${shard} - 1")
      list(APPEND environment GTEST_TOTAL_SHARDS=${ARG_SHARDS} GTEST_SHARD_INDEX=${index})
    endif()
    add_test(NAME ${run}
      COMMAND ${TARGET} --gtest_output=xml:${CMAKE_BINARY_DIR}/results/${run}.xml)
    set_tests_properties(${run} PROPERTIES TIMEOUT ${ARG_TIMEOUT} COST ${ARG_COST}
      LABELS "gtest;${label}" ENVIRONMENT "${environment}")
  endforeach()
endfunction()

# hushbox_add_checks(NAME [QUICK] [TIMEOUT <seconds>] [COST <seconds>] COMMAND <command> ...)
# Registers one run of a script that reports each of its checks on a line: "ok NAME", "not ok NAME",
# or "skip NAME: reason". script/test counts them like the tests of a binary.
function(hushbox_add_checks NAME)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "QUICK" "TIMEOUT;COST" "COMMAND")
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  if(NOT ARG_COST)
    set(ARG_COST 1)
  endif()
  add_test(NAME ${NAME}
    COMMAND ${PROJECT_SOURCE_DIR}/cmake/run-checks ${CMAKE_BINARY_DIR}/results/${NAME}.xml
      ${ARG_COMMAND})
  set_tests_properties(${NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT} COST ${ARG_COST})
  if(ARG_QUICK)
    set_tests_properties(${NAME} PROPERTIES LABELS quick)
  endif()
endfunction()
