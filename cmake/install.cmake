# cmake --install: the library, the header, a CMake package (find_package(norvgl) gives
# norvgl::norvgl) and a pkg-config file. The Windows DLLs install alike (DLL in bin, import
# library in lib).
include(CMakePackageConfigHelpers)
install(TARGETS norvgl EXPORT norvglTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/norvgl.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(NORVGL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/norvgl)
install(EXPORT norvglTargets NAMESPACE norvgl:: DESTINATION ${NORVGL_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/norvglConfig.cmake.in
    ${PROJECT_BINARY_DIR}/norvglConfig.cmake INSTALL_DESTINATION ${NORVGL_CMAKE_DIR})
# Same major version: the exports and their meaning do not change within one.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/norvglConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/norvglConfig.cmake
    ${PROJECT_BINARY_DIR}/norvglConfigVersion.cmake DESTINATION ${NORVGL_CMAKE_DIR})

# Relocatable: the prefix is found from where the file lies, so --prefix at install time works.
file(RELATIVE_PATH NORVGL_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" NORVGL_PC_TO_PREFIX "${NORVGL_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/norvgl.pc.in ${PROJECT_BINARY_DIR}/norvgl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/norvgl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
