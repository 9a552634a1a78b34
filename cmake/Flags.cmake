# What every target of the project is compiled with. Nothing here reaches a user of the installed package.

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ${PROJECT_IS_TOP_LEVEL})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

add_library(corvane_flags INTERFACE)
target_compile_features(corvane_flags INTERFACE cxx_std_20)
target_compile_definitions(corvane_flags INTERFACE CORVANE_VERSION="${PROJECT_VERSION}")

# The same input gives the same bits on every processor: no fused multiply-add behind our back, and nothing that lets
# the compiler reorder arithmetic. Dropping errno and trap bookkeeping changes no result and lets loops vectorise.
# Without semantic interposition an exported member can be inlined into the library's own loops. GCC's vectoriser of
# straight-line code fuses a product with an alternating sum even so: it stays off, and short loops stay loops for the
# other vectoriser.
target_compile_options(corvane_flags INTERFACE
    -ffp-contract=off -fno-math-errno -fno-trapping-math -fno-semantic-interposition
    $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>
    "$<$<CXX_COMPILER_ID:GNU>:SHELL:--param max-completely-peel-times=8>"
    $<$<CONFIG:RelWithDebInfo>:-O3>)

# Coverage tells a fuzzer where an input led, so all of the project's code takes part.
if(CORVANE_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Row kernels join conditions with | and &, because || and && would branch on every sample.
# Loops that are marked as independent stay as they are where optimisation is low.
add_library(corvane_warnings INTERFACE)
target_compile_options(corvane_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
    "$<$<CXX_COMPILER_ID:Clang>:-Wno-bitwise-instead-of-logical;-Wno-pass-failed>")

# Reading the standard library takes longer than compiling what most files add to it, so each target reads it once, and
# what else many of its files include. A target that is joined into one file does so anyway.
function(corvane_precompile target)
    get_target_property(folders ${target} SOURCES)
    list(TRANSFORM folders REPLACE "/[^/]*$" "")
    list(REMOVE_DUPLICATES folders)
    list(LENGTH folders count)
    if(CORVANE_BUILDS_ALL AND count EQUAL 1)
        return()
    endif()
    target_precompile_headers(${target} PRIVATE <algorithm> <array> <cmath> <cstdint> <functional> <limits> <memory>
        <optional> <string> <utility> <vector> ${ARGN})
endfunction()

# All at once, the sources of a folder are compiled as one file: quicker for all of them, slower after a change.
function(corvane_join target)
    if(CORVANE_BUILDS_ALL)
        get_target_property(sources ${target} SOURCES)
        foreach(source IN LISTS sources)
            cmake_path(ABSOLUTE_PATH source NORMALIZE)
            cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
            cmake_path(GET source PARENT_PATH folder)
            string(MAKE_C_IDENTIFIER "${folder}" group)
            set_source_files_properties(${PROJECT_SOURCE_DIR}/${source} PROPERTIES UNITY_GROUP ${group})
        endforeach()
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    endif()
endfunction()

# In a large file the compiler inlines less than in small ones, and makes fewer forms of a function for what it is
# called with, which the loops of the image library cannot do without: the least of 3 x 3 samples took sixteen times as
# long.
set(corvane_kernel_options
    "$<$<CXX_COMPILER_ID:GNU>:SHELL:--param inline-unit-growth=1000 --param large-unit-insns=1000000>"
    "$<$<CXX_COMPILER_ID:GNU>:SHELL:--param ipa-cp-unit-growth=1000>")

# The new dynamic tags leave LD_LIBRARY_PATH the first word, so that one variant can be chosen for a run.
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
    target_link_options(corvane_flags INTERFACE -Wl,--enable-new-dtags)
endif()
