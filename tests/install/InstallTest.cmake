# Installs the build tree into a fresh prefix, builds program/ against it and runs it, then asks the installed command
# for its version. Nothing of the source tree may be needed after the installation.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

set(work ${KALMIA_BINARY_DIR}/install-test)
file(REMOVE_RECURSE ${work})
run(${CMAKE_COMMAND} --install ${KALMIA_BINARY_DIR} --prefix ${work}/prefix)
file(COPY ${KALMIA_SOURCE_DIR}/tests/install/program DESTINATION ${work})
run(${CMAKE_COMMAND} -S ${work}/program -B ${work}/build -G Ninja -DCMAKE_PREFIX_PATH=${work}/prefix
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/uses_kalmia)
run(${work}/prefix/bin/kalmia --version)
