# Installs the build tree BUILD, moves what came out to another place, runs the program there, and builds and runs a
# program of another project on the package.
set(work ${BUILD}/install-check)
set(prefix ${work}/moved)
file(REMOVE_RECURSE ${work})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${status} from: ${ARGN}\n${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/first)
file(RENAME ${work}/first ${prefix})
run(${prefix}/bin/tessel-agent profiles)
run(${prefix}/bin/tessel-agent run)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/consumer -G Ninja -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_BUILD_TYPE=Debug)
run(${CMAKE_COMMAND} --build ${work}/consumer)
run(${work}/consumer/consumer)
