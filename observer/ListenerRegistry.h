// The registration shared by the library's listeners (the load's and the deliveries'): one
// listener per thread and kind, registered for the length of a scope.
//
// The listeners serve the workstation tool, the tests and the benchmarks. A build without the
// load report (KORVA_LOAD_REPORT undefined, as on the device) compiles them out: there is never a
// listener, every hook folds away, and no listener code is built into the library.
#pragma once

#include <atomic>

namespace korva {

#ifdef KORVA_LOAD_REPORT
inline constexpr bool kLoadReport = true;
#else
inline constexpr bool kLoadReport = false;
#endif

// Listener derives from ListenerRegistry<Listener>, which gives it current() and Scope.
template <typename Listener>
class ListenerRegistry {
public:
    // The listener of the calling thread, or null. Costs one load of a process-wide count when
    // nobody listens anywhere, and nothing in a build without the report.
    static Listener* current() {
        if constexpr (kLoadReport) {
            return sRegistered.load(std::memory_order_relaxed) == 0 ? nullptr : currentSlow();
        } else {
            return nullptr;
        }
    }

    // Registers a listener for the calling thread for the scope's lifetime.
    class Scope {
    public:
        explicit Scope(Listener* listener);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Listener* mPrevious;
    };

private:
    static Listener* currentSlow();
    static std::atomic<int> sRegistered;
};

}  // namespace korva
