// The face that a spatializer effect instance shows to the parameter store. The effect implements
// it; the library only calls setParam, getParam and commit. The order of the virtual operations
// is the effect's ABI and must not change: setParam, getParamSize, getParam, commit, then the
// destructor.
#pragma once

namespace korva {

class IEffectKrv {
public:
    // Sets one effect parameter for one output device. code is a VexParameter code.
    virtual int setParam(int deviceId, int code, const int* values, int count) = 0;

    // Number of values the effect holds for a parameter, or a negative errno value. The library
    // never calls it: it sizes its buffers from the store's own lengths. The effect's other
    // clients use it to size the buffer they hand to getParam.
    virtual int getParamSize(int deviceId, int code) = 0;

    // Reads one parameter. On entry *count is the capacity of values, on return the number of
    // values written. Returns 0 on success.
    virtual int getParam(int deviceId, int code, int* values, int* count) = 0;

    // Applies what was set since the last commit. The library always passes kOutputDeviceAll
    // (model/OutputDevice.h).
    virtual int commit(int deviceId) = 0;

    virtual ~IEffectKrv() = default;
};

}  // namespace korva
