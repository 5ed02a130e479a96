#include "cache/DeliveryObserver.h"

namespace korva {

namespace {
thread_local DeliveryObserver* tCurrent = nullptr;
}  // namespace

std::atomic<int> DeliveryObserver::sRegistered{0};

DeliveryObserver::~DeliveryObserver() {}

DeliveryObserver* DeliveryObserver::currentSlow() {
    return tCurrent;
}

DeliveryObserver::Scope::Scope(DeliveryObserver* observer) : mPrevious(tCurrent) {
    tCurrent = observer;
    sRegistered.fetch_add(1, std::memory_order_relaxed);
}

DeliveryObserver::Scope::~Scope() {
    tCurrent = mPrevious;
    sRegistered.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace korva
