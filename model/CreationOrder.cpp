#include "model/CreationOrder.h"

#include <atomic>

namespace korva {

uint64_t nextCreationSerial() {
    static std::atomic<uint64_t> sNextSerial{0};
    return sNextSerial.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace korva
