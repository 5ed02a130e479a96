// Counts the bytes the process holds on the heap, current and peak, by standing in front of
// glibc's malloc family. Linked only into the memory benchmark: every allocation of the
// process, libxml2's and the C++ runtime's included, passes through it.
#pragma once

#include <cstddef>

namespace korva::bench {

class HeapCounter {
public:
    // Usable bytes of every live allocation.
    static size_t current();
    // The highest current() since the last resetPeak().
    static size_t peak();
    static void resetPeak();
};

}  // namespace korva::bench
