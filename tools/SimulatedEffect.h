// The effect that the simulate command drives: the shared recording effect, keeping what it is
// sent so that getParam answers from it as an effect would.
#pragma once

#include "engine/RecordingEffect.h"

namespace korva::tool {

class SimulatedEffect : public RecordingEffect {
public:
    SimulatedEffect() { setKeepsSent(true); }
};

}  // namespace korva::tool
