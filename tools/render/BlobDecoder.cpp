#include "tools/render/BlobDecoder.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "model/OutputDevice.h"
#include "store/SpatializerParamParser.h"

namespace korva::tool {

DecodedBlob BlobDecoder::decode(const std::vector<int>& words) {
    DecodedBlob blob;
    blob.words = words.size();
    // The reader never writes through its pointer; it only takes a mutable one.
    SpatializerParamParser parser(const_cast<int32_t*>(words.data()),
                                  static_cast<int>(words.size() * 4));
    blob.valid = parser.validate();
    if (!parser.begin()) {
        return blob;
    }
    blob.header = parser.mProfileId;
    while (parser.next()) {
        BlobEntry entry{parser.mDeviceId, parser.mParamId, {}};
        // A negative count moves the reader backwards; there are no values to show then.
        if (parser.mNumValues > 0) {
            entry.values.assign(parser.mValues, parser.mValues + parser.mNumValues);
        }
        blob.entries.push_back(std::move(entry));
    }
    return blob;
}

std::string BlobDecoder::deviceName(int32_t deviceId) {
    if (const char* name = outputDeviceName(deviceId)) {
        return name;
    }
    char text[16];
    snprintf(text, sizeof(text), "0x%x", static_cast<unsigned int>(deviceId));
    return text;
}

std::string BlobDecoder::codeText(int32_t code) {
    char bytes[4];
    memcpy(bytes, &code, sizeof(bytes));
    std::string text;
    for (char c : bytes) {
        if (c == '\0') {
            break;
        }
        text += std::isprint(static_cast<unsigned char>(c)) ? c : '?';
    }
    return text;
}

}  // namespace korva::tool
