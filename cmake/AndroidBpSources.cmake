# Writes the source lists that Android.bp must keep in step with, to
# ${PROJECT_BINARY_DIR}/android-bp-sources.txt, one "<kind> <target> <path>" line each (paths
# relative to the source root):
#   product      the objects of libspatializerparamstorage (every korva_subsystem), without:
#   report       the load report's sources, which the device library is built without
#   engine       the host stand-in of the engine's parameter library, which the device tests link
#   support      the shared test support library
#   test         each test program below tests/
#   report-test  each test program that listens to loads, built with the report
# scripts/check-android-bp.py regenerates Android.bp from this list (--write) or checks it, and
# runs as the ctest test android_bp_in_step. Include it after the tests are added.

function(_korva_bp_sources kind target out_var)
    get_target_property(sources ${target} SOURCES)
    get_target_property(dir ${target} SOURCE_DIR)
    get_target_property(report_sources ${target} KORVA_REPORT_SOURCES)
    set(lines ${${out_var}})
    foreach(source IN LISTS sources)
        if(NOT source MATCHES "\\.(cpp|cc|c)$")
            continue()
        endif()
        set(source_kind ${kind})
        if(report_sources AND source IN_LIST report_sources)
            set(source_kind report)
        endif()
        if(NOT IS_ABSOLUTE "${source}")
            set(source "${dir}/${source}")
        endif()
        file(RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${source}")
        list(APPEND lines "${source_kind} ${target} ${relative}")
    endforeach()
    set(${out_var} ${lines} PARENT_SCOPE)
endfunction()

# Every executable defined in a directory or below it. The workstation tool's tests are left
# out: the tool itself is not built for the device.
function(_korva_bp_executables dir out_var)
    set(found)
    if(dir STREQUAL "${PROJECT_SOURCE_DIR}/tests/tool")
        set(${out_var} "" PARENT_SCOPE)
        return()
    endif()
    get_property(targets DIRECTORY "${dir}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "EXECUTABLE")
            list(APPEND found ${target})
        endif()
    endforeach()
    get_property(subdirs DIRECTORY "${dir}" PROPERTY SUBDIRECTORIES)
    foreach(subdir IN LISTS subdirs)
        _korva_bp_executables("${subdir}" below)
        list(APPEND found ${below})
    endforeach()
    set(${out_var} ${found} PARENT_SCOPE)
endfunction()

set(korva_bp_lines)
get_property(korva_bp_subsystems GLOBAL PROPERTY KORVA_SUBSYSTEMS)
foreach(target IN LISTS korva_bp_subsystems)
    _korva_bp_sources(product ${target} korva_bp_lines)
endforeach()
_korva_bp_sources(engine vexparamstore korva_bp_lines)
if(KORVA_BUILD_TESTS)
    _korva_bp_sources(support korva_test_support korva_bp_lines)
    _korva_bp_executables("${PROJECT_SOURCE_DIR}/tests" korva_bp_tests)
    foreach(target IN LISTS korva_bp_tests)
        get_target_property(needs_report ${target} KORVA_NEEDS_REPORT)
        if(needs_report)
            _korva_bp_sources(report-test ${target} korva_bp_lines)
        else()
            _korva_bp_sources(test ${target} korva_bp_lines)
        endif()
    endforeach()
endif()
list(JOIN korva_bp_lines "\n" korva_bp_text)
set(KORVA_ANDROID_BP_SOURCES "${PROJECT_BINARY_DIR}/android-bp-sources.txt")
file(WRITE "${KORVA_ANDROID_BP_SOURCES}.tmp" "${korva_bp_text}\n")
# Unchanged content keeps its time stamp, so nothing that depends on it reruns needlessly.
file(COPY_FILE "${KORVA_ANDROID_BP_SOURCES}.tmp" "${KORVA_ANDROID_BP_SOURCES}" ONLY_IF_DIFFERENT)
file(REMOVE "${KORVA_ANDROID_BP_SOURCES}.tmp")

# Only a build with the report lists everything Android.bp builds.
if(KORVA_BUILD_TESTS AND KORVA_LOAD_REPORT)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    add_test(NAME android_bp_in_step
             COMMAND ${Python3_EXECUTABLE} "${PROJECT_SOURCE_DIR}/scripts/check-android-bp.py"
                     --sources "${KORVA_ANDROID_BP_SOURCES}")
    set_tests_properties(android_bp_in_step PROPERTIES LABELS build)
    # AOSP's upload checks refuse an Android.bp that bpfmt would rewrite; bpfmt -l names such a
    # file. Skipped, with the reason, where blueprint-tools is not installed.
    add_test(NAME android_bp_formatted
             COMMAND sh -c "command -v bpfmt >/dev/null || { echo 'bpfmt not installed \
(blueprint-tools): skipped'; exit 77; }; listed=$(bpfmt -l Android.bp) || exit 1; \
[ -z \"$listed\" ] || { echo \"not in bpfmt's format: $listed\"; bpfmt -d Android.bp; exit 1; }"
             WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}")
    set_tests_properties(android_bp_formatted PROPERTIES LABELS build SKIP_RETURN_CODE 77)
endif()
