// Handle to the effect engine: hands finished parameter blobs to the engine's process-wide
// parameter store. It holds no state.
#pragma once

#include <utils/String16.h>

#include <vector>

namespace korva {

class VexEffect {
public:
    VexEffect(int, android::String16);
    ~VexEffect();

    // Stores the blob in data and returns -22 whatever the store made of it: callers must not
    // read anything into the result.
    int send(int, std::vector<int>& data);
    // Validates the blob, stores each entry by (device, parameter code) and commits once.
    // Returns -22 for a blob the engine's parser rejects (nothing is stored then), else 0.
    int sendSharedStore(void* data, unsigned int size);
    int receive(int, std::vector<int>&);
    bool hasControl();
    int setEnabled(bool);
};

}  // namespace korva
