// Writes seed blobs for fuzz_blob: the built-in default tables, and every blob the store builds
// from the tuning files named on the command line. Each seed is the fuzz input layout: one byte
// of options, then the blob.
//
//   fuzz_seed_dump OUT_DIR [TUNING_FILE...]

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "fuzz/StoreSnapshot.h"
#include "store/SpatializerParamArray.h"

namespace {

int sWritten = 0;

bool writeSeed(const std::string& dir, const void* blob, size_t bytes) {
    std::string path = dir + "/blob-" + std::to_string(sWritten++);
    FILE* file = fopen(path.c_str(), "wb");
    if (file == nullptr) {
        perror(path.c_str());
        return false;
    }
    const uint8_t options = 0;
    bool ok = fwrite(&options, 1, 1, file) == 1 && fwrite(blob, 1, bytes, file) == bytes;
    return fclose(file) == 0 && ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: %s OUT_DIR [TUNING_FILE...]\n", argv[0]);
        return 2;
    }
    korva::fuzz::quietLog();
    std::string dir = argv[1];
    korva::SpatializerParamArray& store = korva::SpatializerParamArray::getInstance();
    korva::SpatializerParamArrayTestPeer peer(store);
    korva::fuzz::StoreSnapshot initial(peer);

    bool ok = true;
    for (int id = -1; id <= 4; id++) {
        auto profile = static_cast<korva::KrvSpatializerProfileId>(id);
        std::vector<uint8_t> blob(store.getProfileParamsSize(profile));
        store.getProfileParams(profile, blob.data());
        ok = writeSeed(dir, blob.data(), blob.size()) && ok;
    }
    for (int i = 2; i < argc; i++) {
        initial.restore(peer);
        store.loadSpatializerXMLFile(argv[i]);
        for (const auto& [id, blob] : peer.xmlProfileParams()) {
            ok = writeSeed(dir, blob.data(), blob.size() * sizeof(int)) && ok;
        }
        for (const auto& [device, blob] : peer.xmlTuningParams()) {
            ok = writeSeed(dir, blob.data(), blob.size() * sizeof(int)) && ok;
        }
    }
    printf("%d seeds written to %s\n", sWritten, dir.c_str());
    return ok ? 0 : 1;
}
