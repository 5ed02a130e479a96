# Sourced by bench/blob-check.sh and bench/run --instructions:
#   build_driver TREE OUT SOURCE BINARY [CMAKE_ARG...]
# builds the library of the source tree TREE in Release into OUT (with the extra cmake arguments),
# then compiles SOURCE (a driver of this checkout) against it into BINARY with the compile and
# link lines of the library's own store sources. The tuning file generator is built too where
# the benchmarks can be (not in a build without the load report).
build_driver() {
    local tree=$1 out=$2 source=$3 binary=$4
    shift 4
    cmake -S "$tree" -B "$out" -DCMAKE_BUILD_TYPE=Release -DKORVA_BUILD_BENCH=ON \
        -DKORVA_BUILD_TESTS=OFF -DKORVA_BUILD_TOOLS=OFF -DKORVA_BUILD_FUZZ=OFF "$@" >/dev/null
    cmake --build "$out" -j 2 --target spatializerparamstorage >/dev/null
    if [ -f "$out/bench/Makefile" ]; then
        cmake --build "$out" -j 2 --target korva-gen-tuning >/dev/null
    fi
    local flags=$out/store/CMakeFiles/korva_store.dir/flags.make
    local defines includes cxxflags
    defines=$(sed -n 's/^CXX_DEFINES = //p' "$flags")
    includes=$(sed -n 's/^CXX_INCLUDES = //p' "$flags")
    cxxflags=$(sed -n 's/^CXX_FLAGS = //p' "$flags")
    # flags.make holds them quoted for the shell that make hands them to, so a build tree whose
    # path has blanks comes through whole when the shell reads them back the same way.
    local args
    eval "args=($cxxflags $defines $includes)"
    c++ "${args[@]}" "$source" -o "$binary" \
        -Wl,-rpath,"$out:$out/engine:$out/platform:/usr/lib/x86_64-linux-gnu/android" \
        "$out/libspatializerparamstorage.so" "$out/engine/libvexparamstore.so" \
        "$out/platform/libkorva_host_platform.so" -lxml2 -L/usr/lib/x86_64-linux-gnu/android \
        -llog -lutils -lcutils -lbase
}
