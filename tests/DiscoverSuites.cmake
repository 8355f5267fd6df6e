# Asks a test program for its tests and writes them down for ctest, one test for each suite: a process for each TEST would
# take most of the time under the sanitizers. The instances of a suite (`Small/Suite`, `Suite/float`) run together, under
# its name. Passed TESTs are not printed, so that a failing one is found at once.
# Suites whose names match LEFT_OUT are not run.
#   cmake -DPROGRAM=.../containers_tests -DPREFIX=containers/ -DOUTPUT=.../tests.cmake -DLEFT_OUT='Stream$' -P DiscoverSuites.cmake
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listing RESULT_VARIABLE status)
string(REGEX REPLACE "[][;]" "?" listing "\n${listing}")  # CMake's lists give them a meaning
string(REGEX MATCHALL "\n[^ \n]+\\.( +# TypeParam)?" suites "${listing}")
if(NOT status EQUAL 0 OR NOT suites)
  message(FATAL_ERROR "${PROGRAM} lists no tests (${status}):${listing}")
endif()

set(names "")
foreach(line IN LISTS suites)
  string(REGEX REPLACE "^\n([^ ]+)\\..*" "\\1" suite "${line}")
  set(name "${suite}")
  if(line MATCHES "TypeParam")
    string(REGEX REPLACE "/[^/]*$" "" name "${name}")
  endif()
  string(REGEX REPLACE "^.*/" "" name "${name}")
  list(APPEND names ${name})
  list(APPEND instances_of_${name} "${suite}.*")
endforeach()
list(REMOVE_DUPLICATES names)

set(script "")
foreach(name IN LISTS names)
  if(LEFT_OUT AND name MATCHES "${LEFT_OUT}")
    continue()
  endif()
  string(JOIN ":" filter ${instances_of_${name}})
  string(APPEND script "add_test(\"${PREFIX}${name}\" \"${PROGRAM}\" \"--gtest_filter=${filter}\" --gtest_brief=1)\n")
  if(name MATCHES "^(Progress|Interrupt)$")  # a terminal's clock: nothing else of this run is to make them late
    string(APPEND script "set_tests_properties(\"${PREFIX}${name}\" PROPERTIES RUN_SERIAL TRUE)\n")
  endif()
endforeach()
file(WRITE ${OUTPUT} "${script}")
