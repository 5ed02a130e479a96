# Finds the AOSP platform libraries as Debian packages them: headers in an "android" folder of
# the include directory, libraries in an "android" folder of the multiarch library directory.
# Defines the imported targets Android::log, Android::cutils, Android::utils and Android::base.

set(_android_lib_hints)
if(CMAKE_LIBRARY_ARCHITECTURE)
    list(APPEND _android_lib_hints
         "${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android")
endif()

find_path(AndroidPlatform_INCLUDE_DIR
          NAMES utils/Singleton.h
          PATH_SUFFIXES android)

set(_android_required_vars AndroidPlatform_INCLUDE_DIR)
foreach(_lib log cutils utils base)
    find_library(AndroidPlatform_${_lib}_LIBRARY
                 NAMES ${_lib}
                 HINTS ${_android_lib_hints}
                 PATH_SUFFIXES android)
    list(APPEND _android_required_vars AndroidPlatform_${_lib}_LIBRARY)
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(AndroidPlatform REQUIRED_VARS ${_android_required_vars})

if(AndroidPlatform_FOUND)
    foreach(_lib log cutils utils base)
        if(NOT TARGET Android::${_lib})
            add_library(Android::${_lib} UNKNOWN IMPORTED)
            set_target_properties(Android::${_lib} PROPERTIES
                IMPORTED_LOCATION "${AndroidPlatform_${_lib}_LIBRARY}"
                INTERFACE_INCLUDE_DIRECTORIES "${AndroidPlatform_INCLUDE_DIR}")
        endif()
    endforeach()
    get_filename_component(AndroidPlatform_LIBRARY_DIR "${AndroidPlatform_log_LIBRARY}" DIRECTORY)
endif()

mark_as_advanced(AndroidPlatform_INCLUDE_DIR)
