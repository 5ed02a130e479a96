// The cache's own account of what it sends: which blob an operation sends from, which entry of it
// the effect calls that follow carry, and what the cache put in place of the entry's values on
// the way (the user's graphic-EQ gains, a tuning device's mix matrix, the effect's own matrix).
// A listener registers for the calling thread; with nobody registered, an operation costs one
// test of a process-wide count.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace korva {

enum class DeliveredBlob : uint8_t {
    kBuiltinProfile,  // a built-in table of the store, by profile id
    kFileProfile,     // a profile's blob built from the tuning file
    kTuningDevice,    // a tuning device's blob
};

// What the effect calls after a report carry.
enum class Delivery : uint8_t {
    kAsIs,             // the entry's values as they are
    kUserGeqGains,     // the bands (the entry's, or the effect's own) with a profile's user gains
    kTuningMixMatrix,  // the enable word (the entry's, or the effect's own) with a tuning matrix
    kEffectMatrixOn,   // instead of the entry: the effect's own mix matrix, switched on
    kEffectMatrixOff,  // instead of the entry: the effect's own mix matrix, switched off
    kSwitchedOff,      // instead of the entry: the single value 0
};

class DeliveryObserver {
public:
    virtual ~DeliveryObserver();

    // The operation starts sending a blob: profileId for profiles, device for tuning devices.
    virtual void onBlob(DeliveredBlob /*blob*/, int /*profileId*/, const std::string& /*device*/) {}
    // The calls that follow, up to the next report, carry the entry at this index of the blob
    // begun last. profileId names whose user gains (kUserGeqGains), device whose mix matrix
    // (kTuningMixMatrix); both are left at 0 and "" otherwise.
    virtual void onEntry(int /*entry*/, Delivery /*how*/, int /*profileId*/,
                         const std::string& /*device*/) {}
    // The calls that follow carry no blob entry: the effect's own values read back, with the
    // user gains of profileId (kUserGeqGains) or the mix matrix of device (kTuningMixMatrix).
    virtual void onEffectValues(Delivery /*how*/, int /*profileId*/, const std::string& /*device*/) {
    }

    // The listener of the calling thread, or null. Costs one load of a process-wide count when
    // nobody listens anywhere.
    static DeliveryObserver* current() {
        return sRegistered.load(std::memory_order_relaxed) == 0 ? nullptr : currentSlow();
    }

    // Registers a listener for the calling thread for the scope's lifetime.
    class Scope {
    public:
        explicit Scope(DeliveryObserver* observer);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        DeliveryObserver* mPrevious;
    };

private:
    static DeliveryObserver* currentSlow();
    static std::atomic<int> sRegistered;
};

}  // namespace korva
