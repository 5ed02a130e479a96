# korva_subsystem(<name> SOURCES <files...> [REPORT_SOURCES <files...>] [DEPENDS <targets...>])
#
# Each subsystem folder builds an OBJECT library korva_<name>. The product shared library is
# the union of all of them; tests link just the subsystems they exercise, so a half-built
# folder never stops the others from building. REPORT_SOURCES serve only the load report and
# are built only with KORVA_LOAD_REPORT; a subsystem left without sources is not built.
function(korva_subsystem name)
    cmake_parse_arguments(ARG "" "" "SOURCES;REPORT_SOURCES;DEPENDS" ${ARGN})
    set(sources ${ARG_SOURCES})
    if(KORVA_LOAD_REPORT)
        list(APPEND sources ${ARG_REPORT_SOURCES})
    endif()
    if(NOT sources)
        return()
    endif()
    set(target korva_${name})
    add_library(${target} OBJECT ${sources})
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/spatializerparamstorage>)
    target_link_libraries(${target} PUBLIC
        Android::log Android::cutils Android::utils LibXml2::LibXml2 ${ARG_DEPENDS})
    if(KORVA_HOST_PLATFORM)
        target_link_libraries(${target} PUBLIC korva_host_platform)
    endif()
    set_property(GLOBAL APPEND PROPERTY KORVA_SUBSYSTEMS ${target})
    # The source list is also read by the check that keeps Android.bp in step.
    set_property(GLOBAL APPEND PROPERTY KORVA_PRODUCT_SOURCES ${ARG_SOURCES})
    set_property(TARGET ${target} PROPERTY KORVA_SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(TARGET ${target} PROPERTY KORVA_REPORT_SOURCES ${ARG_REPORT_SOURCES})
endfunction()
