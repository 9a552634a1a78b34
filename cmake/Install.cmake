# The CMake package: find_package(Corvane) gives Corvane::corvane, Corvane::io, Corvane::stars,
# Corvane::catalogue and Corvane::stack.

include(CMakePackageConfigHelpers)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/Corvane)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/CorvaneConfig.cmake.in
    ${PROJECT_BINARY_DIR}/CorvaneConfig.cmake INSTALL_DESTINATION ${packageDir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CorvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)

install(FILES ${PROJECT_BINARY_DIR}/CorvaneConfig.cmake ${PROJECT_BINARY_DIR}/CorvaneConfigVersion.cmake
    DESTINATION ${packageDir} COMPONENT Corvane_Development)
install(EXPORT CorvaneTargets NAMESPACE Corvane:: DESTINATION ${packageDir} COMPONENT Corvane_Development)
