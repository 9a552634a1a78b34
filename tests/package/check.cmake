# Run with BUILD (the project's build folder), CONFIG, WORK (a folder of ours), GENERATOR, COMPILER and FLAGS.

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/installed)

# The package must also work from another place than the one it was installed to.
file(RENAME ${WORK}/installed ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G ${GENERATOR}
    -D CMAKE_BUILD_TYPE=${CONFIG} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS}
    -D CMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/build --config ${CONFIG})
run(${WORK}/build/consumer)
run(${WORK}/prefix/bin/corvane --version)
