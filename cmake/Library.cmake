# How the project's libraries are declared.

set(CORVANE_ABI ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})   # below 1.0 every minor version may break it
set(CORVANE_INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR}/corvane-${CORVANE_ABI})

# Collects the current folder's sources into SOURCES and its headers into HEADERS, without paths that match EXCLUDE.
function(corvane_find_sources sourcesVariable headersVariable exclude)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    if(exclude)
        list(FILTER sources EXCLUDE REGEX ${exclude})
        list(FILTER headers EXCLUDE REGEX ${exclude})
    endif()
    set(${sourcesVariable} ${sources} PARENT_SCOPE)
    set(${headersVariable} ${headers} PARENT_SCOPE)
endfunction()

# A library of the package: found, built, installed and exported as Corvane::EXPORT_NAME.
function(corvane_add_library target exportName)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;HEADERS")
    add_library(${target} SHARED ${arg_SOURCES})
    add_library(Corvane::${exportName} ALIAS ${target})
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
    target_compile_features(${target} PUBLIC cxx_std_20)
    corvane_precompile(${target})
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:corvane_flags> $<BUILD_INTERFACE:corvane_warnings>)
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${exportName} VERSION ${PROJECT_VERSION} SOVERSION ${CORVANE_ABI}
        DEFINE_SYMBOL CORVANE_BUILDING INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${target} EXPORT CorvaneTargets
        RUNTIME COMPONENT Corvane_Runtime
        LIBRARY COMPONENT Corvane_Runtime NAMELINK_COMPONENT Corvane_Development
        ARCHIVE COMPONENT Corvane_Development
        FILE_SET HEADERS DESTINATION ${CORVANE_INSTALL_INCLUDE} COMPONENT Corvane_Development)
endfunction()

# Builds the sources of TARGET again for one processor level, into the folder beside the base library where the system's
# loader looks for it. Callers link the base library alone: its soname is the same.
function(corvane_add_variant target level)
    set(variant ${target}_${level})
    get_target_property(sources ${target} SOURCES)
    add_library(${variant} SHARED ${sources})
    target_include_directories(${variant} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_options(${variant} PRIVATE -march=${level})
    corvane_precompile(${variant})
    target_link_libraries(${variant} PRIVATE corvane_flags corvane_warnings)
    set_target_properties(${variant} PROPERTIES
        OUTPUT_NAME ${target} VERSION ${PROJECT_VERSION} SOVERSION ${CORVANE_ABI} DEFINE_SYMBOL CORVANE_BUILDING
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/glibc-hwcaps/${level})
    add_dependencies(${target} ${variant})
    install(TARGETS ${variant}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level} COMPONENT Corvane_Runtime NAMELINK_SKIP)
endfunction()
