// Collects effect parameter settings into one int buffer in the profile blob layout: profile id,
// entry count, then per entry device id, parameter code, value count and values.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "translator/VexParameter.h"

namespace korva {

class VexEffect;

class SetParamCommand {
public:
    explicit SetParamCommand(int profileId);
    virtual ~SetParamCommand();

    // Applies to the entries added afterwards; earlier entries keep their device id.
    void setDeviceId(int deviceId);

    void add(VexParameter param, int value);
    void add(VexParameter param, std::vector<int>* values);
    // One entry whose values are the lists joined in order.
    void add(VexParameter param, std::initializer_list<std::vector<int>*> lists);
    // As above, with first written before the lists' values.
    void add(VexParameter param, int first, std::initializer_list<std::vector<int>*> lists);

    // Writes the entry count into the buffer and hands the buffer to the effect. An empty
    // command is not sent and gives 0.
    int execute(VexEffect& effect);

    // Device id written into every entry added from now on.
    int mDeviceId;
    // Number of entries added so far. Callers that keep mBuffer without execute() write it into
    // mBuffer[1] themselves.
    int mCount;
    std::vector<int> mBuffer;

private:
    // Appends device id, code and value count, and counts the entry.
    void beginEntry(VexParameter param, size_t numValues);
};

}  // namespace korva
