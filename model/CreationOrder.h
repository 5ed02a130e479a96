// Records live in sets ordered by address, which changes from run to run. Whoever must visit them
// in a reproducible order (the loader, the dumps) sorts them by the serial each record takes when
// it is constructed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

namespace korva {

// Strictly increasing across the whole process, whichever thread constructs the record.
uint64_t nextCreationSerial();

template <typename T>
std::vector<T*> inCreationOrder(const std::set<T*>& records) {
    std::vector<T*> ordered(records.begin(), records.end());
    std::sort(ordered.begin(), ordered.end(), [](const T* a, const T* b) {
        return a->getCreationSerial() < b->getCreationSerial();
    });
    return ordered;
}

}  // namespace korva
