// Prints every blob one store load of a tuning file builds, in the order the loader files them,
// with what the store then answers for each: a text that changes whenever a blob's words, an
// entry's order or the store's choice of blob changes. bench/blob-check.sh compares its digest
// between two commits, so that a change made for speed shows that it changed no result. Built
// against a library without the load report, it prints the store's answers alone.
//
//   korva-blob-dump FILE
#include <cstdio>
#include <string>
#include <vector>

#include "observer/LoadObserver.h"
#include "store/SpatializerParamArray.h"

namespace {

using namespace korva;

void printWords(const char* what, const std::string& key, const std::vector<int>& words) {
    printf("%s %s %zu:", what, key.c_str(), words.size());
    for (int word : words) printf(" %d", word);
    printf("\n");
}

#ifdef KORVA_LOAD_REPORT
class Printer : public LoadObserver {
public:
    void onBlobFiled(const BlobKey& blob, const std::vector<int>& words, BlobFate fate) override {
        const std::string key =
            blob.isTuning ? "tuning " + blob.device : "profile " + std::to_string(blob.profileId);
        printWords(fate == BlobFate::kStored    ? "stored"
                   : fate == BlobFate::kDropped ? "dropped"
                                                : "replaced",
                   key, words);
    }
    void onLoadEnd() override { printf("end of load\n"); }
};
#endif

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE\n", argv[0]);
        return 2;
    }
    SpatializerParamArray& store = android::Singleton<SpatializerParamArray>::getInstance();
    {
#ifdef KORVA_LOAD_REPORT
        Printer printer;
        LoadObserver::Scope listening(&printer);
#endif
        store.loadSpatializerXMLFile(argv[1]);
    }
    // What the store answers afterwards, for every profile and every port's tuning devices.
    for (int id = PROFILE_COMMON; id <= PROFILE_CUSTOM; id++) {
        if (store.isXMLProfileValid(id)) {
            printWords("profile", std::to_string(id), store.getXMLProfileParams(id));
            printWords("gains", std::to_string(id),
                       store.getProfileGeqGains(static_cast<KrvSpatializerProfileId>(id)));
        }
    }
    for (int port = 0; port <= 6; port++) {
        const std::string devices = store.getAvailableTuningDevices(port);
        printf("port %d: %s selected %s\n", port, devices.c_str(),
               store.getSelectedTuningDevice(port).c_str());
        size_t start = 0;
        while (start < devices.size()) {
            size_t end = devices.find(' ', start);
            if (end == std::string::npos) end = devices.size();
            const std::string device = devices.substr(start, end - start);
            if (!device.empty() && store.isXMLTuningValid(device)) {
                printWords("tuning", device, store.getXMLTuningParams(device));
                printWords("matrix", device, store.getXMLTuningMixMatrix(device));
            }
            start = end + 1;
        }
    }
    return 0;
}
