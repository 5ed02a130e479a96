// Reads a parameter blob entry by entry with the store's own blob reader, for display.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korva::tool {

struct BlobEntry {
    int32_t deviceId;
    int32_t code;
    std::vector<int32_t> values;
};

struct DecodedBlob {
    // Whether the store's reader accepts the blob; the entries read before a fault are kept.
    bool valid = false;
    int32_t header = 0;
    size_t words = 0;
    std::vector<BlobEntry> entries;
};

class BlobDecoder {
public:
    static DecodedBlob decode(const std::vector<int>& words);

    // The output device of an entry: all, speaker, wired headphone, a2dp or usb; others in hex.
    static std::string deviceName(int32_t deviceId);
    // The parameter code as the engine spells it: its bytes up to the first zero.
    static std::string codeText(int32_t code);
};

}  // namespace korva::tool
