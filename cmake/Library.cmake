# How the project's libraries are declared.

set(CORVANE_ABI ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})   # below 1.0 every minor version may break it
set(CORVANE_INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR}/corvane-${CORVANE_ABI})

# Collects the current folder's sources into VARIABLE, without paths that match EXCLUDE, when it is given.
function(corvane_find_sources variable)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(ARGC GREATER 1)
        list(FILTER sources EXCLUDE REGEX ${ARGV1})
    endif()
    set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# A library of the package: found, built, installed and exported as Corvane::EXPORT_NAME. HEADERS are what a user
# includes, the headers that they need are found; NEEDS are the libraries of the package that a user gets along.
function(corvane_add_library target exportName)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;HEADERS;NEEDS")
    add_library(${target} SHARED ${arg_SOURCES})
    add_library(Corvane::${exportName} ALIAS ${target})
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CORVANE_INSTALL_INCLUDE}>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    corvane_precompile(${target})
    corvane_join(${target})
    target_link_libraries(${target} PUBLIC ${arg_NEEDS}
        PRIVATE $<BUILD_INTERFACE:corvane_flags> $<BUILD_INTERFACE:corvane_warnings>)
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${exportName} VERSION ${PROJECT_VERSION} SOVERSION ${CORVANE_ABI}
        DEFINE_SYMBOL CORVANE_BUILDING INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${target} EXPORT CorvaneTargets
        RUNTIME COMPONENT Corvane_Runtime
        LIBRARY COMPONENT Corvane_Runtime NAMELINK_COMPONENT Corvane_Development
        ARCHIVE COMPONENT Corvane_Development)

    install(CODE "
        set(SOURCE \"${PROJECT_SOURCE_DIR}\")
        set(HEADERS ${arg_HEADERS})
        set(WORK \"${CMAKE_CURRENT_BINARY_DIR}/include\")
        set(DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CORVANE_INSTALL_INCLUDE}\")
        include(\"${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake\")"
        COMPONENT Corvane_Development)

    set(pkgConfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH toPrefix /${pkgConfig} /)
    list(JOIN arg_NEEDS " " needs)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${target}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}.pc DESTINATION ${pkgConfig} COMPONENT Corvane_Development)
endfunction()

# Of the given sources, those that define no class and no function that a header of this folder marks as CORVANE_API.
function(corvane_find_internals variable)
    file(GLOB_RECURSE headers ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    foreach(header IN LISTS headers)
        file(STRINGS ${header} marked REGEX "CORVANE_API [A-Za-z]")
        foreach(line IN LISTS marked)
            if(line MATCHES "^(class|struct) CORVANE_API ([A-Za-z0-9_]+)")
                list(APPEND interface "${CMAKE_MATCH_2}::")
            elseif(line MATCHES "CORVANE_API [^(]*[ *&]([A-Za-z0-9_]+)[(]")
                list(APPEND interface "${CMAKE_MATCH_1}[(]")
            endif()
        endforeach()
    endforeach()
    list(JOIN interface "|" interface)
    foreach(source IN LISTS ARGN)
        file(STRINGS ${source} defined LIMIT_COUNT 1 REGEX "^([A-Za-z].*[ *&])?(${interface})")
        if(NOT defined)
            list(APPEND internals ${source})
        endif()
    endforeach()
    set(${variable} ${internals} PARENT_SCOPE)
endfunction()

# Builds the sources of TARGET again for one processor level, into the folder beside the base library where the system's
# loader looks for it. Callers link the base library alone: its soname is the same.
function(corvane_add_variant target level)
    set(variant ${target}_${level})
    get_target_property(sources ${target} SOURCES)
    add_library(${variant} SHARED ${sources})
    target_include_directories(${variant} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_options(${variant} PRIVATE -march=${level} ${corvane_kernel_options})
    corvane_precompile(${variant})
    corvane_join(${variant})
    target_link_libraries(${variant} PRIVATE corvane_flags corvane_warnings)
    set_target_properties(${variant} PROPERTIES
        OUTPUT_NAME ${target} VERSION ${PROJECT_VERSION} SOVERSION ${CORVANE_ABI} DEFINE_SYMBOL CORVANE_BUILDING
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/glibc-hwcaps/${level})
    add_dependencies(${target} ${variant})
    install(TARGETS ${variant}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level} COMPONENT Corvane_Runtime NAMELINK_SKIP)
endfunction()
