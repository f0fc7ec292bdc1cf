# Installs the build tree BUILD, moves the result to another place, runs the program there, and builds and runs a
# program of another project on the package, with the package file and with pkg-config. The project is copied away, so
# that nothing but what is installed can be found.
set(work ${BUILD}/install-check)
set(prefix ${work}/moved)
set(project ${work}/project)
file(REMOVE_RECURSE ${work})

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${work} RESULT_VARIABLE status OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${status} from: ${ARGN}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Runs the consumer: the document's error and the written row.
function(run_consumer)
  run(${ARGN})
  foreach(text "/local/hall/brightness 256: " "level=0x7")
    string(FIND "${output}" "${text}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "no \"${text}\" in the output of ${ARGN}:\n${output}")
    endif()
  endforeach()
endfunction()

file(MAKE_DIRECTORY ${work})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/first)
file(RENAME ${work}/first ${prefix})
run(${prefix}/bin/tessel-agent profiles)
run(${prefix}/bin/tessel-agent run)

file(COPY ${CMAKE_CURRENT_LIST_DIR}/ DESTINATION ${project})
run(${CMAKE_COMMAND} -S ${project} -B ${work}/consumer -G Ninja -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_BUILD_TYPE=Debug)
run(${CMAKE_COMMAND} --build ${work}/consumer)
run_consumer(${work}/consumer/consumer)

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
run(${PKG_CONFIG} --cflags --libs tessel-platform)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${COMPILER} ${project}/main.cpp ${project}/Lamp.cpp -o ${work}/by-pkg-config ${flags})
run_consumer(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/lib ${work}/by-pkg-config)
