# Run with BUILD (the project's build folder), CONFIG, WORK (a folder of ours), GENERATOR, COMPILER, FLAGS and PKG_CONFIG.

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/installed)

# The project and the program of the README, as they stand there.
file(READ ${CMAKE_CURRENT_LIST_DIR}/../../README.md page)
string(REGEX MATCH "```cmake\n([^`]*)```" block "${page}")
file(WRITE ${WORK}/CMakeLists.txt "${CMAKE_MATCH_1}")
string(REGEX MATCH "```cpp\n([^`]*)```" block "${page}")
file(WRITE ${WORK}/main.cpp "${CMAKE_MATCH_1}")

# The package must also work from another place than the one it was installed to.
file(RENAME ${WORK}/installed ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${WORK} -B ${WORK}/build -G ${GENERATOR}
    -D CMAKE_BUILD_TYPE=${CONFIG} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS}
    -D CMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/build --config ${CONFIG})
run(${WORK}/build/consumer)
run(${WORK}/prefix/bin/corvane --version)
foreach(page IN ITEMS man/man1/corvane.1 bash-completion/completions/corvane)
    if(NOT EXISTS ${WORK}/prefix/share/${page})
        message(FATAL_ERROR "share/${page} is not installed")
    endif()
endforeach()

# The same program by pkg-config.
file(GLOB_RECURSE described ${WORK}/prefix/*.pc)
list(GET described 0 folder)
cmake_path(GET folder PARENT_PATH folder)
set(ENV{PKG_CONFIG_PATH} ${folder})
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs corvane corvane_io corvane_catalogue corvane_stack
    OUTPUT_VARIABLE words COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(words UNIX_COMMAND "${words}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
cmake_path(GET folder PARENT_PATH libraries)
run(${COMPILER} -std=c++20 ${flags} ${WORK}/main.cpp -o ${WORK}/by-pkg-config ${words} -Wl,-rpath,${libraries})
run(${WORK}/by-pkg-config)
