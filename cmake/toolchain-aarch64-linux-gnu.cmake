# Cross build for AArch64 Linux with Debian's g++-aarch64-linux-gnu and the :arm64 packages of the
# libraries (multiarch: they sit in /usr/lib/aarch64-linux-gnu beside the host's, no sysroot).
# Tests and test discovery run under qemu-aarch64. scripts/setup-arm64.sh installs all of it.
#
#   cmake -S . -B build-arm64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-aarch64-linux-gnu.cmake

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(korva_arm64_libdir /usr/lib/aarch64-linux-gnu)
set(korva_arm64_cross_libdir /usr/aarch64-linux-gnu/lib)
# Where scripts/setup-arm64.sh unpacks the arm64 7z.so that Debian's arm64 libbacktrace needs:
# its package cannot be installed beside the host's.
set(KORVA_ARM64_EXTRA_DIR "${CMAKE_BINARY_DIR}/sysroot-extra"
    CACHE PATH "Folder holding the unpacked arm64 p7zip-full package")
set(korva_arm64_7z_dir "${KORVA_ARM64_EXTRA_DIR}/usr/lib/p7zip")

# The host's pkg-config would hand FindLibXml2 the x86_64 library folder as a hint.
set(ENV{PKG_CONFIG_LIBDIR} "${korva_arm64_libdir}/pkgconfig:/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# A cross linker ignores the RUNPATH of the libraries it reads, so the folders of their own
# dependencies (libbacktrace and libbase behind libutils, 7z.so behind libbacktrace) are named.
# The top-level CMakeLists.txt adds them as link options, one item each: the build tree (and so
# the 7z.so folder) may have spaces in its path, which a flags string would split.
set(KORVA_RPATH_LINK_DIRS "${korva_arm64_libdir}/android" "${korva_arm64_7z_dir}")

# Libraries and headers of the target, programs of the host.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# The cross libc comes first so that it matches the dynamic loader the prefix supplies; the
# multiarch folders then give the :arm64 packages' libraries.
find_program(KORVA_QEMU_AARCH64 qemu-aarch64 REQUIRED)
set(korva_arm64_library_path
    ${korva_arm64_cross_libdir} ${korva_arm64_libdir} ${korva_arm64_libdir}/android
    ${korva_arm64_7z_dir})
list(JOIN korva_arm64_library_path ":" korva_arm64_library_path)
set(CMAKE_CROSSCOMPILING_EMULATOR
    "${KORVA_QEMU_AARCH64}" -L /usr/aarch64-linux-gnu
    -E "LD_LIBRARY_PATH=${korva_arm64_library_path}")
