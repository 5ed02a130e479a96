# Installs the library, its headers and a CMake package, so that an effect project can
# find_package(spatializerparamstorage) and link spatializerparamstorage::spatializerparamstorage.
include(CMakePackageConfigHelpers)

set(korva_install_targets spatializerparamstorage vexparamstore)
if(KORVA_HOST_PLATFORM)
    list(APPEND korva_install_targets korva_host_platform)
endif()

# Debian keeps the AOSP libraries in an android/ folder outside the loader's search path: the
# installed libraries carry it, as they carry each other's folder.
set_target_properties(${korva_install_targets} PROPERTIES
    INSTALL_RPATH "$ORIGIN;${AndroidPlatform_LIBRARY_DIR}")

install(TARGETS ${korva_install_targets}
        EXPORT spatializerparamstorageTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/spatializerparamstorage)

foreach(dir store cache reader model observer translator engine)
    if(EXISTS "${PROJECT_SOURCE_DIR}/${dir}")
        install(DIRECTORY ${dir}
                DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/spatializerparamstorage
                FILES_MATCHING PATTERN "*.h")
    endif()
endforeach()
if(KORVA_HOST_PLATFORM)
    install(DIRECTORY platform/include/
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/spatializerparamstorage/platform)
endif()

set(korva_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/spatializerparamstorage)
install(EXPORT spatializerparamstorageTargets
        NAMESPACE spatializerparamstorage::
        DESTINATION ${korva_cmake_dir})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/spatializerparamstorageConfig.cmake.in
    ${PROJECT_BINARY_DIR}/spatializerparamstorageConfig.cmake
    INSTALL_DESTINATION ${korva_cmake_dir})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/spatializerparamstorageConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
        ${PROJECT_BINARY_DIR}/spatializerparamstorageConfig.cmake
        ${PROJECT_BINARY_DIR}/spatializerparamstorageConfigVersion.cmake
        ${PROJECT_SOURCE_DIR}/cmake/FindAndroidPlatform.cmake
        DESTINATION ${korva_cmake_dir})
