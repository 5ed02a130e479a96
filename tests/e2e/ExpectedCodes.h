// The effect parameters that one record of each kind turns into, in blob order, written out by
// hand from the translation rules: every parameter a record kind accepts is translated, held or
// not, and the translators run in their fixed order. Optional entries (channel branches, gated
// features) are spliced in where their translator writes them.
#pragma once

#include <string>
#include <vector>

namespace korva::test {

// A profile: its twelve profile-level parameters.
inline const std::vector<std::string> kProfileCodes = {
    "mdle", "miee", "msce", "mave", "dvme", "drcm", "rvsa", "rvse", "hvm", "hvrc", "hlra", "sdfa",
};

// A profile endpoint: its 27 parameters, virtual bass giving two entries.
inline const std::vector<std::string> kEndpointCodes = {
    "geon", "ieon", "iea",  "mdee", "mvbe", "beon", "plb",  "dea",  "deon", "ded",
    "ngon", "dsb",  "vbm",  "vbon", "vmb",  "dvla", "dvle", "dvli", "dvlo", "dom",
    "svsb", "vssd", "dplp", "hpon", "hptw", "hpat", "hpaa", "hpar",
};

// The IEQ preset an endpoint selects, translated before the endpoint.
inline const std::vector<std::string> kIeqCodes = {"ieid", "iebs"};

// Optional entries of a tuning, to combine with |.
enum TuningBranch {
    kNoBranch = 0,
    kAudioOptimizer = 1 << 0,        // aobs: 2 or 4 output channels
    kSibilanceSuppression = 1 << 1,  // rssa: regulator-sibilance-suppress-enable 1
    kComplexEqualizer = 1 << 2,      // ceqt: complex-equalizer-enable 1
    kBassMbdrc = 1 << 3,             // bmdt: bass-mbdrc-enable not 0
    kSpeakerOptimization = 1 << 4,   // dsoa, dsoi: speaker optimization enabled
};

inline std::vector<std::string> tuningCodes(int branches) {
    std::vector<std::string> codes = {"aoon"};
    if (branches & kAudioOptimizer) {
        codes.push_back("aobs");
    }
    codes.insert(codes.end(), {"beb", "becf", "bew", "arsa", "arbs"});
    if (branches & kSibilanceSuppression) {
        codes.push_back("rssa");
    }
    codes.insert(codes.end(),
                 {"ards", "aron", "arde", "arod", "artp", "rsse", "vbsf", "vbmf", "vbog",
                  "vbsg", "vbhg", "vbbg", "vbct", "vbhm", "vbhb", "vbmx", "vbrg", "dvlc",
                  "dvmc", "dhfm", "dfsa", "dsa",  "dhsa", "drsa", "drha", "ceon"});
    if (branches & kComplexEqualizer) {
        codes.push_back("ceqt");
    }
    codes.push_back("bmde");
    if (branches & kBassMbdrc) {
        codes.push_back("bmdt");
    }
    codes.insert(codes.end(), {"svm", "avsb", "svrc", "vbcg", "hfon", "hfcf"});
    if (branches & kSpeakerOptimization) {
        codes.insert(codes.end(), {"dsoa", "dsoi"});
    }
    codes.push_back("dsoe");
    return codes;
}

}  // namespace korva::test
