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
function(build folder)
  run(${CMAKE_COMMAND} -S ${work}/program -B ${work}/${folder} -G Ninja -DCMAKE_PREFIX_PATH=${work}/prefix
      -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DCMAKE_BUILD_TYPE=${BUILD_TYPE} ${ARGN})
  run(${CMAKE_COMMAND} --build ${work}/${folder})
endfunction()
# What reads JSON and gzip files is inside: nobody needs their packages.
set(inside -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON -DCMAKE_DISABLE_FIND_PACKAGE_ZLIB=ON)
build(build ${inside})
run(${work}/build/uses_kalmia)
build(build-analysis -DWITH_ANALYSIS=ON ${inside})
run(${work}/build-analysis/uses_analysis)
run(${work}/prefix/bin/kalmia --version)
