#include "model/LoadObserver.h"

namespace korva {

namespace {
thread_local LoadObserver* tCurrent = nullptr;
}  // namespace

std::atomic<int> LoadObserver::sRegistered{0};

LoadObserver::~LoadObserver() {}

LoadObserver* LoadObserver::currentSlow() {
    return tCurrent;
}

LoadObserver::Scope::Scope(LoadObserver* observer) : mPrevious(tCurrent) {
    tCurrent = observer;
    sRegistered.fetch_add(1, std::memory_order_relaxed);
}

LoadObserver::Scope::~Scope() {
    tCurrent = mPrevious;
    sRegistered.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace korva
