// Tuning file bytes through the store's own loader: reader, translators and blob assembly, with
// the tool's listener registered and its findings made from the load's report. Every blob and mix
// matrix the load files is then walked, and the effect parameter cache sends them to
// an effect that reads every value, as a device would after loading such a file.
//
// The loader runs on the one store instance, from the state construction left (StoreSnapshot).

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "cache/SpatializerParamCache.h"
#include "engine/EffectParamParser.h"
#include "engine/RecordingEffect.h"
#include "fuzz/FuzzSupport.h"
#include "fuzz/StoreSnapshot.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"
#include "tools/lint/LintRules.h"
#include "tools/load/LoadReport.h"

namespace {

using korva::SpatializerParamArray;
using korva::SpatializerParamArrayTestPeer;

std::string sPath;
const korva::fuzz::StoreSnapshot* sInitial;

// The loader builds its blobs itself, so both readers must accept every one of them whole.
void walkBlob(std::vector<int>& blob) {
    int bytes = static_cast<int>(blob.size() * sizeof(int));
    korva::SpatializerParamParser parser(blob.data(), bytes);
    EffectParamParser engineParser(blob.data(), bytes);
    if (!parser.validate() || !engineParser.validate() || !parser.begin() || !engineParser.begin()) {
        abort();
    }
    while (parser.next()) {
        if (!engineParser.next() || parser.mNumValues != engineParser.mNumValues) {
            abort();
        }
        for (int i = 0; i < parser.mNumValues; i++) {
            korva::fuzz::consume(parser.mValues[i] ^ engineParser.mValues[i]);
        }
    }
    if (engineParser.next()) {
        abort();
    }
}

int portNumber(const std::string& name) {
    for (int port = 0; port < korva::kNumAndroidDevices; port++) {
        if (name == korva::kAndroidDeviceNames[port]) {
            return port;
        }
    }
    return -1;
}

// What an effect instance does after start: every profile, both content-processing states, the
// tunings of every port, each tuning device selected, and the gains written back.
void driveCache(SpatializerParamArrayTestPeer& peer) {
    korva::SpatializerParamCache cache;
    // Every value sent is copied, so a count past the library's buffer is a read past its end;
    // getParam writes the whole capacity it is told of.
    korva::RecordingEffect effect;
    effect.setUnanswered(korva::RecordingEffect::Unanswered::kFillCapacity);
    std::vector<int> profiles = {-1, 0, 1, 2, 3, 4};
    for (const auto& [id, blob] : peer.xmlProfileParams()) {
        profiles.push_back(id);
    }
    for (int id : profiles) {
        auto profile = static_cast<korva::KrvSpatializerProfileId>(id);
        cache.setProfile(profile);
        cache.setKorvaContentProfile(profile, &effect);
        cache.updateContentProcEnabled(&effect, true, false);
        cache.updateContentProcEnabled(&effect, false, false);
        cache.updateContentProcEnabled(&effect, true, true);
        std::vector<int> gains = cache.getProfileGeqGains();
        cache.setProfileGeqGains(gains, &effect);
    }
    cache.loadTuning(&effect);
    std::map<std::string, std::string> ports = peer.tuningDevicePorts();
    for (const auto& [device, portName] : ports) {
        int port = portNumber(portName);
        if (port >= 0) {
            cache.setSelectedTuningDevice(port, device, &effect);
        }
        cache.loadTuningDevice(device, &effect);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    korva::fuzz::quietLog();
    korva::fuzz::setLogLevel(2);
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr ? tmp : "/tmp") + "/korva-fuzz-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    int fd = mkstemp(name.data());
    if (fd < 0) {
        perror("mkstemp");
        abort();
    }
    close(fd);
    sPath = name.data();
    atexit([] { unlink(sPath.c_str()); });

    SpatializerParamArrayTestPeer peer(SpatializerParamArray::getInstance());
    sInitial = new korva::fuzz::StoreSnapshot(peer);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* file = fopen(sPath.c_str(), "wb");
    if (file == nullptr || fwrite(data, 1, size, file) != size || fclose(file) != 0) {
        abort();
    }

    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer peer(store);
    sInitial->restore(peer);
    korva::tool::LoadReport report;
    {
        korva::LoadObserver::Scope listening(&report);
        store.loadSpatializerXMLFile(sPath);
    }
    for (const korva::tool::Finding& finding : korva::tool::LintRules::run(report)) {
        korva::fuzz::consume(static_cast<int>(finding.message.size() + finding.notes.size()));
    }

    for (auto& [id, blob] : peer.xmlProfileParams()) {
        walkBlob(blob);
    }
    for (auto& [device, blob] : peer.xmlTuningParams()) {
        walkBlob(blob);
    }
    for (const auto& [device, matrix] : peer.tuningMixMatrices()) {
        for (int value : matrix) {
            korva::fuzz::consume(value);
        }
    }
    driveCache(peer);
    // Back to the snapshot before returning: what the input allocated is freed within the input,
    // so libFuzzer's malloc and free counts agree and it does not run the input again to look
    // for a leak (a real leak still unbalances them).
    sInitial->restore(peer);
    return 0;
}
