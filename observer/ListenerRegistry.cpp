#include "observer/ListenerRegistry.h"

#include "observer/DeliveryObserver.h"
#include "observer/LoadObserver.h"

namespace korva {

namespace {

template <typename Listener>
thread_local Listener* tCurrent = nullptr;

}  // namespace

template <typename Listener>
std::atomic<int> ListenerRegistry<Listener>::sRegistered{0};

template <typename Listener>
Listener* ListenerRegistry<Listener>::currentSlow() {
    return tCurrent<Listener>;
}

template <typename Listener>
ListenerRegistry<Listener>::Scope::Scope(Listener* listener) : mPrevious(tCurrent<Listener>) {
    tCurrent<Listener> = listener;
    sRegistered.fetch_add(1, std::memory_order_relaxed);
}

template <typename Listener>
ListenerRegistry<Listener>::Scope::~Scope() {
    tCurrent<Listener> = mPrevious;
    sRegistered.fetch_sub(1, std::memory_order_relaxed);
}

template class ListenerRegistry<LoadObserver>;
template class ListenerRegistry<DeliveryObserver>;

}  // namespace korva
