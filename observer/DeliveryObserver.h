// The cache's own account of what it sends: which blob an operation sends from, which entry of it
// the effect calls that follow carry, and what the cache put in place of the entry's values on
// the way (the user's graphic-EQ gains, a tuning device's mix matrix, the effect's own matrix).
// A listener registers for the calling thread; with nobody registered, an operation costs one
// test of a process-wide count, and nothing in a build without the report.
#pragma once

#include <cstdint>
#include <string>

#include "observer/ListenerRegistry.h"

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

class DeliveryObserver : public ListenerRegistry<DeliveryObserver> {
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
};

#ifdef KORVA_LOAD_REPORT
extern template class ListenerRegistry<DeliveryObserver>;
#endif

}  // namespace korva
